#pragma once

#include "platform/Updates.h"

namespace rb {

// There is no update controller on Linux yet: packages are updated by the distribution.
class LinuxUpdates final : public Updates {
public:
    // Always null.
    std::unique_ptr<Updater> startUpdater(UpdaterDelegate& delegate) override;
};

} // namespace rb
