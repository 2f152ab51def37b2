#pragma once

#include "platform/Alerts.h"

#include <deque>
#include <optional>
#include <vector>

namespace rb {

class VirtualRunLoop;

// Alerts come up one after another and stay until the user answers: now, or by an answer laid in store.
class VirtualAlerts final : public Alerts {
public:
    explicit VirtualAlerts(VirtualRunLoop& loop)
        : loop_(loop) {}

    void runModal(const Alert& alert, std::function<void(std::size_t button)> answer) override;

    // Every alert that has come up so far, answered or not.
    const std::vector<Alert>& shown() const { return shown_; }
    // The one that waits for an answer.
    std::optional<Alert> current() const;
    std::size_t waiting() const { return waiting_.size(); }
    // Answers the alert that is up, else the next one when it comes up, in a turn of the loop of its own.
    void answerNext(std::size_t button);
    // Escape or the close button.
    void closeCurrent();

private:
    struct Waiting {
        Alert alert;
        std::function<void(std::size_t)> answer;
    };
    void comeUp();
    void answerCurrent(std::size_t button);

    VirtualRunLoop& loop_;
    std::vector<Alert> shown_;
    std::deque<Waiting> waiting_; // the first is the one that is up
    bool isUp_ = false;
    std::deque<std::size_t> stored_;
};

} // namespace rb
