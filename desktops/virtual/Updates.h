#pragma once

#include "desktops/virtual/Journal.h"
#include "platform/Updates.h"

#include <vector>

namespace rb {

class VirtualRunLoop;

// An update controller that only writes down its checks, if this system has one.
class VirtualUpdates final : public Updates {
public:
    // One check: the feed that the delegate named, nothing for the primary one.
    using Check = std::optional<std::string>;

    VirtualUpdates(const VirtualRunLoop& loop, Journal& journal)
        : loop_(loop)
        , journal_(journal) {}

    std::unique_ptr<Updater> startUpdater(UpdaterDelegate& delegate) override;

    void setAvailable(bool available) { available_ = available; }
    const std::vector<Check>& checks() const { return checks_; }

private:
    class VirtualUpdater;

    const VirtualRunLoop& loop_;
    Journal& journal_;
    bool available_ = true;
    std::vector<Check> checks_;
};

} // namespace rb
