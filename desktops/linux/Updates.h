#pragma once

#include "platform/Updates.h"

namespace rb {

class Application;
class Appearance;
class Log;

// The update controller: checks are runs of the update helper, which reads the feed, shows what is new, downloads,
// verifies and hands over to the system's installer. Packages of the distribution have no feed configured and so no
// controller.
class LinuxUpdates final : public Updates {
public:
    // All of them outlive it.
    LinuxUpdates(const Application& application, const Appearance& appearance, Log& log)
        : application_(application)
        , appearance_(appearance)
        , log_(log) {}

    // Null where the helper isn't installed.
    std::unique_ptr<Updater> startUpdater(UpdaterDelegate& delegate) override;

private:
    const Application& application_;
    const Appearance& appearance_;
    Log& log_;
};

} // namespace rb
