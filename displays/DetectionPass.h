#pragma once

#include "displays/HelperRunner.h"
#include "displays/Standby.h"

#include <functional>
#include <vector>

namespace rb {

// One look at everything: the snapshot of the ports, the list of control channels, a probe of each. Main thread only;
// nothing is told once this is gone.
class DetectionPass {
public:
    using Finished = std::function<void(ConnectionSnapshot, std::vector<DisplayRow>)>;

    // The runner outlives it. `rows` are those of the connected displays, `oldRows` those of the pass before.
    DetectionPass(HelperRunner& runner, std::vector<DisplayRow> rows, std::vector<DisplayRow> oldRows,
                  Finished finished);
    // Begins; to be called once.
    void start();

private:
    void probe(std::size_t index);
    void finish();

    HelperRunner& runner_;
    std::vector<DisplayRow> rows_;
    std::vector<DisplayRow> oldRows_;
    Finished finished_;
    ConnectionSnapshot snapshot_;
    HelperAnswer list_;
    bool hasHelper_;
    Lifetime lifetime_;
};

} // namespace rb
