#include "desktops/linux/Alerts.h"

#include "desktops/linux/AlertDialog.h"
#include "desktops/linux/Windows.h"

#include <utility>

namespace rb {

LinuxAlerts::LinuxAlerts(LinuxWindows& windows)
    : windows_(windows) {}

LinuxAlerts::~LinuxAlerts() = default;

void LinuxAlerts::runModal(const Alert& alert, std::function<void(std::size_t button)> answer) {
    waiting_.push_back({alert, std::move(answer)});
    if (!dialog_) {
        showNext();
    }
}

std::optional<Alert> LinuxAlerts::currentAlert() const {
    return dialog_ ? std::optional(waiting_.front().alert) : std::nullopt;
}

void LinuxAlerts::showNext() {
    dialog_ = std::make_unique<AlertDialog>(waiting_.front().alert, [this](std::size_t button) { answered(button); });
    dialog_->present();
    windows_.activate(*dialog_);
}

void LinuxAlerts::answered(std::size_t button) {
    const auto answer = std::move(waiting_.front().answer);
    waiting_.pop_front();
    // The dialog is in the middle of its own event; it goes when that is over.
    AlertDialog* finished = dialog_.release();
    finished->hide();
    finished->deleteLater();
    if (!waiting_.empty()) {
        showNext();
    }
    if (answer) {
        answer(button);
    }
}

} // namespace rb
