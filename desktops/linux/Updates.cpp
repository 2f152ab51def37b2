#include "desktops/linux/Updates.h"

namespace rb {

std::unique_ptr<Updater> LinuxUpdates::startUpdater(UpdaterDelegate&) {
    return nullptr;
}

} // namespace rb
