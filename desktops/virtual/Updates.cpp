#include "desktops/virtual/Updates.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/RunLoop.h"

namespace rb {

class VirtualUpdates::VirtualUpdater final : public Updater {
public:
    VirtualUpdater(VirtualUpdates& updates, UpdaterDelegate& delegate)
        : updates_(updates)
        , delegate_(delegate) {
        updates_.updater_ = this;
    }
    ~VirtualUpdater() override { updates_.updater_ = nullptr; }
    VirtualUpdater(const VirtualUpdater&) = delete;
    VirtualUpdater& operator=(const VirtualUpdater&) = delete;

    void checkForUpdates() override {
        updates_.loop_.requireMainThread("Updater::checkForUpdates");
        updates_.checks_.push_back(delegate_.feedURLStringForUpdater());
    }
    UpdaterDelegate& delegate() { return delegate_; }

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

void VirtualUpdates::checkByItself() {
    if (updater_ == nullptr) {
        throw ImpossibleAct("there is no update controller");
    }
    updater_->checkForUpdates();
}

void VirtualUpdates::finishCycle(const std::optional<UpdateError>& error) {
    if (updater_ == nullptr) {
        throw ImpossibleAct("there is no update controller");
    }
    updater_->delegate().updaterDidFinishUpdateCycle(error);
}

} // namespace rb
