#pragma once

#include "platform/Alerts.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>

namespace rb {

class AlertDialog;
class LinuxWindows;

// Alerts as dialogs of our own, one at a time; while one is up the program's other windows don't react. No event loop
// is nested: the answer comes as a callback.
class LinuxAlerts final : public Alerts {
public:
    // Outlives it.
    explicit LinuxAlerts(LinuxWindows& windows);
    ~LinuxAlerts() override;
    LinuxAlerts(const LinuxAlerts&) = delete;
    LinuxAlerts& operator=(const LinuxAlerts&) = delete;

    void runModal(const Alert& alert, std::function<void(std::size_t button)> answer) override;

    // The dialog that is up; null when there is none.
    AlertDialog* current() const { return dialog_.get(); }
    // What it asks.
    std::optional<Alert> currentAlert() const;

private:
    struct Waiting {
        Alert alert;
        std::function<void(std::size_t)> answer;
    };
    void showNext();
    void answered(std::size_t button);

    LinuxWindows& windows_;
    std::deque<Waiting> waiting_; // the first is the one that is up
    std::unique_ptr<AlertDialog> dialog_;
};

} // namespace rb
