#pragma once

#include "platform/Desktop.h"
#include "platform/Updates.h"
#include "platform/URLSessions.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace rb {

// Which of the two configured feeds the update controller reads: a remembered choice, changed when a check through
// one fails, and probed anew whenever the user asks for a check. Owns the controller. Main thread only.
class UpdateFeed final : private UpdaterDelegate {
public:
    explicit UpdateFeed(const Desktop& desktop)
        : desktop_(desktop) {}
    ~UpdateFeed() override = default;
    UpdateFeed(const UpdateFeed&) = delete;
    UpdateFeed& operator=(const UpdateFeed&) = delete;

    // Creates the controller when the program is configured for updates and the system has one.
    void startUpdater();
    bool hasUpdater() const { return updater_ != nullptr; }
    bool probingFeeds() const { return probingFeeds_; }

    // The user's click. With a mirror both feeds are tried at once, and the first that answers well is chosen.
    void checkForUpdatesFromMenu();

private:
    // Tasks of one probe; replaced by the next.
    struct Probe {
        std::unique_ptr<URLSession> session;
        std::size_t pending = 0;
        bool finished = false;
    };

    std::optional<std::string> primaryFeedURL() const;
    std::optional<std::string> mirrorFeedURL() const;
    bool usesMirror() const;
    void setUsesMirror(bool uses);
    std::optional<std::string> feedURLStringForUpdater() override;
    void updaterDidFinishUpdateCycle(const std::optional<UpdateError>& error) override;
    void candidateFailed(const std::shared_ptr<Probe>& probe);
    // Once per probe; nothing when no feed passed.
    void finishProbe(const std::shared_ptr<Probe>& probe, std::optional<std::size_t> passed);

    const Desktop& desktop_;
    std::unique_ptr<Updater> updater_; // null when updating is not configured
    std::shared_ptr<Probe> probe_;
    bool probingFeeds_ = false;
};

} // namespace rb
