#include "desktops/linux/EventMonitors.h"

#include <QCursor>
#include <QGuiApplication>
#include <QWindow>

#include <utility>
#include <vector>
#include <xcb/xinput.h>

namespace rb {

namespace {

constexpr std::uint32_t leftButton = 1;
constexpr std::uint32_t rightButton = 3;

std::uint64_t maskOf(const xcb_ge_generic_event_t& event) {
    if (event.event_type == XCB_INPUT_RAW_MOTION) {
        return MouseMovedMask;
    }
    if (event.event_type != XCB_INPUT_RAW_BUTTON_PRESS) {
        return 0;
    }
    const auto& press = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event);
    if (press.detail == leftButton) {
        return LeftMouseDownMask;
    }
    return press.detail == rightButton ? std::uint64_t{RightMouseDownMask} : 0;
}

bool isInput(const xcb_ge_generic_event_t& event) {
    return event.event_type == XCB_INPUT_RAW_MOTION || event.event_type == XCB_INPUT_RAW_BUTTON_PRESS ||
           event.event_type == XCB_INPUT_RAW_BUTTON_RELEASE;
}

// Whether the event goes to a window of this program.
bool isOverOwnWindow() {
    const QWindow* window = QGuiApplication::topLevelAt(QCursor::pos());
    return window != nullptr && window->isVisible() && !window->flags().testFlag(Qt::WindowTransparentForInput);
}

} // namespace

Handle LinuxEventMonitors::addGlobalMonitor(std::uint64_t mask, std::function<void()> happened) {
    return add({.mask = mask, .local = false, .happened = std::move(happened)});
}

Handle LinuxEventMonitors::addLocalMonitor(std::uint64_t mask, std::function<void()> happened) {
    return add({.mask = mask, .local = true, .happened = std::move(happened)});
}

Handle LinuxEventMonitors::add(Monitor monitor) {
    const std::uint64_t number = next_++;
    monitors_.emplace(number, std::move(monitor));
    selectEvents();
    return Handle(lifetime_.guard([this, number] {
        monitors_.erase(number);
        selectEvents();
    }));
}

Handle LinuxEventMonitors::onNextInput(std::function<void()> happened) {
    const std::uint64_t number = next_++;
    awaitingInput_.emplace(number, std::move(happened));
    if (!selectEvents()) {
        awaitingInput_.erase(number);
        return {};
    }
    return Handle(lifetime_.guard([this, number] {
        if (awaitingInput_.erase(number) > 0) {
            selectEvents();
        }
    }));
}

bool LinuxEventMonitors::selectEvents() {
    if (!events_) {
        const auto* extension = xcb_get_extension_data(connection_.get(), &xcb_input_id);
        if (extension == nullptr || extension->present == 0) {
            return false;
        }
        inputOpcode_ = extension->major_opcode;
        const XReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
            connection_.get(), xcb_input_xi_query_version(connection_.get(), 2, 2), nullptr));
        if (!version) {
            return false;
        }
        events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
    }
    std::uint64_t wanted = 0;
    for (const auto& [number, monitor] : monitors_) {
        wanted |= monitor.mask;
    }
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, 0};
    if ((wanted & (LeftMouseDownMask | RightMouseDownMask)) != 0) {
        selection.mask |= XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    }
    if ((wanted & MouseMovedMask) != 0) {
        selection.mask |= XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
    }
    if (!awaitingInput_.empty()) {
        selection.mask |= XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                          XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE;
    }
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &selection.head);
    xcb_flush(connection_.get());
    return true;
}

void LinuxEventMonitors::tellOfInput() {
    std::vector<std::uint64_t> numbers;
    for (const auto& [number, happened] : awaitingInput_) {
        numbers.push_back(number);
    }
    for (const std::uint64_t number : numbers) {
        // An earlier one may have dropped it.
        if (const auto told = awaitingInput_.extract(number)) {
            told.mapped()();
        }
    }
    // From here on not every step of a moving mouse wakes the program.
    selectEvents();
}

void LinuxEventMonitors::handle(const xcb_generic_event_t& event) {
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if ((event.response_type & 0x7FU) != XCB_GE_GENERIC || generic.extension != inputOpcode_) {
        return;
    }
    if (!awaitingInput_.empty() && isInput(generic)) {
        tellOfInput();
    }
    const std::uint64_t mask = maskOf(generic);
    if (mask == 0) {
        return;
    }
    const bool local = isOverOwnWindow();
    std::vector<std::uint64_t> numbers;
    for (const auto& [number, monitor] : monitors_) {
        if (monitor.local == local && (monitor.mask & mask) != 0) {
            numbers.push_back(number);
        }
    }
    for (const std::uint64_t number : numbers) {
        // An earlier one may have dropped it.
        if (const auto found = monitors_.find(number); found != monitors_.end()) {
            const auto happened = found->second.happened;
            happened();
        }
    }
}

} // namespace rb
