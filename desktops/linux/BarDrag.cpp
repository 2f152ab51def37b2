#include "desktops/linux/BarDrag.h"

#include "desktops/linux/XConnection.h"

#include <utility>

namespace rb {

namespace {

constexpr std::uint8_t leftButton = 1;
constexpr std::uint16_t super = XCB_MOD_MASK_4;
// Caps Lock and Num Lock, whatever they say.
constexpr std::uint16_t lights[] = {0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};

} // namespace

BarDrag::BarDrag(XConnection& connection, xcb_window_t window, Listener listener)
    : connection_(connection)
    , window_(window)
    , listener_(std::move(listener))
    , events_(connection.onEvent([this](const xcb_generic_event_t& event) { handle(event); })) {
    const std::uint16_t events =
        XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
    for (const std::uint16_t light : lights) {
        xcb_grab_button(connection_.get(), 0, window_, events, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                        XCB_WINDOW_NONE, XCB_CURSOR_NONE, leftButton, static_cast<std::uint16_t>(super | light));
    }
    xcb_flush(connection_.get());
}

BarDrag::~BarDrag() {
    for (const std::uint16_t light : lights) {
        xcb_ungrab_button(connection_.get(), leftButton, window_, static_cast<std::uint16_t>(super | light));
    }
    xcb_flush(connection_.get());
}

void BarDrag::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
    case XCB_BUTTON_PRESS: {
        const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(event);
        if (press.event == window_ && press.detail == leftButton && !std::exchange(dragging_, true)) {
            listener_.began(press.event_x);
        }
        break;
    }
    case XCB_MOTION_NOTIFY: {
        const auto& motion = reinterpret_cast<const xcb_motion_notify_event_t&>(event);
        if (motion.event == window_ && dragging_) {
            listener_.moved(motion.event_x);
        }
        break;
    }
    case XCB_BUTTON_RELEASE: {
        const auto& release = reinterpret_cast<const xcb_button_release_event_t&>(event);
        if (release.event == window_ && release.detail == leftButton && std::exchange(dragging_, false)) {
            listener_.ended();
        }
        break;
    }
    default:
        break;
    }
}

} // namespace rb
