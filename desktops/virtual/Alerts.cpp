#include "desktops/virtual/Alerts.h"

#include "desktops/virtual/Contract.h"
#include "desktops/virtual/RunLoop.h"

#include <algorithm>
#include <string>
#include <utility>

namespace rb {

namespace {

std::size_t buttonCount(const Alert& alert) {
    return std::max<std::size_t>(alert.buttons.size(), 1);
}

} // namespace

void VirtualAlerts::runModal(const Alert& alert, std::function<void(std::size_t button)> answer) {
    loop_.requireMainThread("Alerts::runModal");
    waiting_.push_back({alert, std::move(answer)});
    if (!isUp_) {
        comeUp();
    }
}

void VirtualAlerts::comeUp() {
    isUp_ = true;
    shown_.push_back(waiting_.front().alert);
    if (!stored_.empty()) {
        const std::size_t button = stored_.front();
        stored_.pop_front();
        loop_.post([this, button] { answerCurrent(button); });
    }
}

std::optional<Alert> VirtualAlerts::current() const {
    return isUp_ ? std::optional(waiting_.front().alert) : std::nullopt;
}

void VirtualAlerts::answerNext(std::size_t button) {
    if (waiting_.empty()) {
        stored_.push_back(button);
    } else {
        answerCurrent(button);
    }
}

void VirtualAlerts::closeCurrent() {
    if (waiting_.empty()) {
        throw ImpossibleAct("no alert is up");
    }
    answerCurrent(buttonCount(waiting_.front().alert) - 1);
}

void VirtualAlerts::answerCurrent(std::size_t button) {
    if (waiting_.empty() || button >= buttonCount(waiting_.front().alert)) {
        throw ImpossibleAct("no alert with a button number " + std::to_string(button) + " is up");
    }
    const Waiting answered = std::move(waiting_.front());
    waiting_.pop_front();
    isUp_ = false;
    if (answered.answer) {
        answered.answer(button);
    }
    // Unless the answer asked a question itself, which brought the next one up.
    if (!isUp_ && !waiting_.empty()) {
        comeUp();
    }
}

} // namespace rb
