#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace rb {

// Why an update cycle failed, as the update framework numbers it.
struct UpdateError {
    // The framework's own domain; codes of other domains mean other things.
    static constexpr const char* frameworkDomain = "SUSparkleErrorDomain";
    static constexpr std::int64_t appcastNotLoaded = 1002;
    static constexpr std::int64_t downloadFailed = 2001;

    std::string domain = {};
    std::int64_t code = 0;
};

// What the update controller asks and tells its owner. Main thread only.
class UpdaterDelegate {
public:
    virtual ~UpdaterDelegate() = default;
    // The feed for this check; nothing means the configured primary feed.
    virtual std::optional<std::string> feedURLStringForUpdater() = 0;
    // A check and whatever it led to is over; nothing for one without an error.
    virtual void updaterDidFinishUpdateCycle(const std::optional<UpdateError>& error) = 0;
};

// The software-update controller. Main thread only.
class Updater {
public:
    virtual ~Updater() = default;
    // Brings the check that is under way to the front, if there is one.
    virtual void checkForUpdates() = 0;
};

class Updates {
public:
    virtual ~Updates() = default;
    // Creates and starts the controller; the delegate outlives it. Null when this system has no update
    // controller.
    virtual std::unique_ptr<Updater> startUpdater(UpdaterDelegate& delegate) = 0;
};

} // namespace rb
