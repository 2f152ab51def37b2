#pragma once

#include <memory>
#include <optional>
#include <string>

namespace rb {

// What the update controller asks its owner.
class UpdaterDelegate {
public:
    virtual ~UpdaterDelegate() = default;
    // The feed for this check; nothing means the configured primary feed.
    virtual std::optional<std::string> feedURLStringForUpdater() = 0;
};

// The software-update controller. Main thread only.
class Updater {
public:
    virtual ~Updater() = default;
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
