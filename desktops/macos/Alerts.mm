#include "desktops/macos/Alerts.h"

#include "desktops/macos/Bridge.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

// Runs the alert until the user answers; the index of the chosen button.
std::size_t run(const Alert& alert) {
    NSAlert* native = [[NSAlert alloc] init];
    native.messageText = nsString(alert.messageText);
    native.informativeText = nsString(alert.informativeText);
    for (const AlertButton& button : alert.buttons) {
        NSButton* added = [native addButtonWithTitle:nsString(button.title)];
        added.hasDestructiveAction = button.destructive ? YES : NO;
    }
    // Buttons answer with consecutive numbers; anything else means that the alert went away without a choice.
    const NSModalResponse response = [native runModal];
    const std::size_t last = std::max<std::size_t>(alert.buttons.size(), 1) - 1;
    const NSInteger index = response - NSAlertFirstButtonReturn;
    return index >= 0 && static_cast<std::size_t>(index) <= last ? static_cast<std::size_t>(index) : last;
}

} // namespace

void MacAlerts::runModal(const Alert& alert, std::function<void(std::size_t button)> answer) {
    asked_.push_back({alert, std::move(answer)});
    if (asked_.size() == 1) {
        turn_ = loop_.after(0, [this] { showFirst(); });
    }
}

void MacAlerts::showFirst() {
    const std::size_t button = run(asked_.front().alert);
    const auto answer = std::move(asked_.front().answer);
    asked_.pop_front();
    if (!asked_.empty()) {
        turn_ = loop_.after(0, [this] { showFirst(); });
    }
    answer(button);
}

} // namespace rb
