#pragma once

#include "desktops/virtual/Journal.h"
#include "platform/Updates.h"

#include <vector>

namespace rb {

class VirtualRunLoop;

// An update controller that writes down its checks, if this system has one; the test ends their cycles.
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
    // The controller checks by itself, as it does from time to time.
    void checkByItself();
    // The cycle that is under way ends; the controller must be there.
    void finishCycle(const std::optional<UpdateError>& error);

private:
    class VirtualUpdater;

    const VirtualRunLoop& loop_;
    Journal& journal_;
    bool available_ = true;
    std::vector<Check> checks_;
    VirtualUpdater* updater_ = nullptr;
};

} // namespace rb
