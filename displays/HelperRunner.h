#pragma once

#include "displays/ConnectionSnapshot.h"
#include "displays/HelperAnswer.h"
#include "platform/Desktop.h"
#include "platform/Handle.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace rb {

class ChildProcess;

// Runs the display and the cable helper, one at a time, with a time limit. Every failure becomes an answer with a text
// for the user. Main thread only; answers come in later turns of the run loop and not at all once this is gone, which
// ends a helper that still runs.
class HelperRunner {
public:
    explicit HelperRunner(const Desktop& desktop);
    ~HelperRunner();
    HelperRunner(const HelperRunner&) = delete;
    HelperRunner& operator=(const HelperRunner&) = delete;

    // Where the display helper is, or nothing.
    std::optional<std::string> helperPath() const;
    // One command to the display helper.
    void run(const std::vector<std::string>& arguments, std::function<void(const HelperAnswer&)> answer);
    // The snapshot, or one with an error alone.
    void readConnections(std::function<void(ConnectionSnapshot)> answer);

private:
    struct Run;

    void begin(const std::shared_ptr<Run>& run, std::string program, const std::vector<std::string>& arguments,
               double limit);

    const Desktop& desktop_;
    std::shared_ptr<Run> running_;
};

} // namespace rb
