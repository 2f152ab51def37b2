#include "app/UpdateFeed.h"

#include "app/DefaultsKeys.h"
#include "platform/Application.h"
#include "platform/RunLoop.h"
#include "platform/UserDefaults.h"

#include <utility>

namespace rb {

namespace {

constexpr double probeTimeout = 6.0; // seconds
constexpr std::size_t mirrorCandidate = 1;
constexpr int httpOK = 200;

// Only a body that really is a feed counts: networks that want a login answer everything with a page of their own.
bool passes(const URLAnswer& answer) {
    return !answer.failed && answer.status == httpOK && answer.text.find("<rss") != std::string::npos;
}

} // namespace

void UpdateFeed::startUpdater() {
    const auto isConfigured = [this](const char* key) {
        return !desktop_.application.infoString(key).value_or("").empty();
    };
    if (isConfigured("SUFeedURL") && isConfigured("SUPublicEDKey")) {
        updater_ = desktop_.updates.startUpdater(*this);
    }
}

void UpdateFeed::checkForUpdatesFromMenu() {
    const auto mirror = mirrorFeedURL();
    if (!mirror) {
        updater_->checkForUpdates();
        return;
    }
    if (std::exchange(probingFeeds_, true)) {
        return;
    }
    const auto probe = std::make_shared<Probe>();
    probe_ = probe;
    probe->session = desktop_.urlSessions.createEphemeralSession({.requestTimeout = probeTimeout});
    const std::array<std::string, 2> candidates{primaryFeedURL().value_or(""), *mirror};
    probe->pending = candidates.size();
    for (std::size_t index = 0; index < candidates.size(); ++index) {
        const auto done = [this, weak = std::weak_ptr(probe), index](const URLAnswer& answer) {
            const auto mine = weak.lock();
            if (!mine) {
                return;
            }
            if (passes(answer)) {
                finishProbe(mine, index);
            } else {
                candidateFailed(mine);
            }
        };
        if (!probe->session->startDataTask(candidates[index], done)) {
            candidateFailed(probe);
        }
    }
}

void UpdateFeed::candidateFailed(const std::shared_ptr<Probe>& probe) {
    if (--probe->pending == 0) {
        finishProbe(probe, std::nullopt);
    }
}

void UpdateFeed::finishProbe(const std::shared_ptr<Probe>& probe, std::optional<std::size_t> passed) {
    if (std::exchange(probe->finished, true)) {
        return;
    }
    probingFeeds_ = false;
    if (passed) {
        setUsesMirror(*passed == mirrorCandidate);
    }
    probe_.reset(); // the session goes with the last of its callbacks that is under way
    updater_->checkForUpdates();
}

std::optional<std::string> UpdateFeed::primaryFeedURL() const {
    return desktop_.application.infoString("SUFeedURL");
}

std::optional<std::string> UpdateFeed::mirrorFeedURL() const {
    const auto mirror = desktop_.application.infoString("RBMirrorFeedURL");
    return mirror && !mirror->empty() ? mirror : std::nullopt;
}

bool UpdateFeed::usesMirror() const {
    return desktop_.userDefaults.boolForKey(DefaultsKey::RBUseMirrorFeed);
}

void UpdateFeed::setUsesMirror(bool uses) {
    desktop_.userDefaults.setObject(DefaultsKey::RBUseMirrorFeed, uses);
}

std::optional<std::string> UpdateFeed::feedURLStringForUpdater() {
    return usesMirror() ? mirrorFeedURL() : std::nullopt;
}

void UpdateFeed::updaterDidFinishUpdateCycle(const std::optional<UpdateError>& error) {
    if (!error || !mirrorFeedURL() || error->domain != UpdateError::frameworkDomain) {
        return;
    }
    if (error->code == UpdateError::appcastNotLoaded || error->code == UpdateError::downloadFailed) {
        setUsesMirror(!usesMirror());
    }
}

} // namespace rb
