#include "desktops/virtual/Updates.h"

#include "desktops/virtual/RunLoop.h"

namespace rb {

class VirtualUpdates::VirtualUpdater final : public Updater {
public:
    VirtualUpdater(VirtualUpdates& updates, UpdaterDelegate& delegate)
        : updates_(updates)
        , delegate_(delegate) {}

    void checkForUpdates() override {
        updates_.loop_.requireMainThread("Updater::checkForUpdates");
        updates_.checks_.push_back(delegate_.feedURLStringForUpdater());
    }

private:
    VirtualUpdates& updates_;
    UpdaterDelegate& delegate_;
};

std::unique_ptr<Updater> VirtualUpdates::startUpdater(UpdaterDelegate& delegate) {
    loop_.requireMainThread("Updates::startUpdater");
    if (!available_) {
        return nullptr;
    }
    journal_.note("startUpdater");
    return std::make_unique<VirtualUpdater>(*this, delegate);
}

} // namespace rb
