#pragma once

#include "platform/Log.h"
#include "platform/Updates.h"

namespace rb {

// The update framework that the program's bundle carries, loaded by name so that a build without it works too.
class MacUpdates final : public Updates {
public:
    explicit MacUpdates(Log& log)
        : log_(log) {}
    std::unique_ptr<Updater> startUpdater(UpdaterDelegate& delegate) override;

private:
    Log& log_;
};

} // namespace rb
