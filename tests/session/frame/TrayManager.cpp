#include "tests/session/frame/TrayManager.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace rb {

namespace {

constexpr std::uint16_t iconSize = 24;
constexpr std::uint16_t trayWidth = 10 * iconSize;

xcb_client_message_event_t message(xcb_window_t window, xcb_atom_t type, const std::array<std::uint32_t, 5>& data) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = type;
    std::copy(data.begin(), data.end(), std::begin(event.data.data32));
    return event;
}

void send(xcb_connection_t* connection, xcb_window_t to, std::uint32_t mask, const xcb_client_message_event_t& event) {
    xcb_send_event(connection, 0, to, mask, reinterpret_cast<const char*>(&event));
}

} // namespace

TrayManager::TrayManager(const std::string& display)
    : x_(display)
    , opcode_(x_.atom("_NET_SYSTEM_TRAY_OPCODE")) {
    xcb_connection_t* connection = x_.connection();
    const xcb_atom_t selection = x_.atom("_NET_SYSTEM_TRAY_S0");
    const xcb_timestamp_t time = x_.serverTime();
    window_ = xcb_generate_id(connection);
    const std::array<std::uint32_t, 2> values{1, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window_, x_.root(),
                      static_cast<std::int16_t>(x_.screen().width_in_pixels - trayWidth),
                      static_cast<std::int16_t>(x_.screen().height_in_pixels - iconSize), trayWidth, iconSize, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                      values.data());
    const std::uint32_t horizontal = 0;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window_, x_.atom("_NET_SYSTEM_TRAY_ORIENTATION"),
                        XCB_ATOM_CARDINAL, 32, 1, &horizontal);
    xcb_map_window(connection, window_);
    xcb_set_selection_owner(connection, window_, selection, time);
    if (x_.selectionOwner("_NET_SYSTEM_TRAY_S0") != window_) {
        throw std::runtime_error("someone else is the system tray");
    }
    send(connection, x_.root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
         message(x_.root(), x_.atom("MANAGER"), {time, selection, window_, 0, 0}));
    x_.sync();
}

const std::vector<xcb_window_t>& TrayManager::icons() {
    x_.sync();
    while (const auto event = ownReply(xcb_poll_for_event(x_.connection()))) {
        const auto type = static_cast<std::uint8_t>(event->response_type & 0x7f);
        if (type == XCB_CLIENT_MESSAGE) {
            const auto& request = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            if (request.type == opcode_ && request.data.data32[1] == 0) {
                dock(request.data.data32[2]);
            }
        }
    }
    std::erase_if(icons_, [this](xcb_window_t icon) {
        const auto cookie = xcb_query_tree(x_.connection(), icon);
        const auto tree = ownReply(xcb_query_tree_reply(x_.connection(), cookie, nullptr));
        return !tree || tree->parent != window_;
    });
    return icons_;
}

void TrayManager::dock(xcb_window_t icon) {
    if (std::find(icons_.begin(), icons_.end(), icon) != icons_.end()) {
        return; // some icons ask twice
    }
    xcb_connection_t* connection = x_.connection();
    const auto place = static_cast<std::uint32_t>(icons_.size() * iconSize);
    const std::array<std::uint32_t, 4> geometry{place, 0, iconSize, iconSize};
    xcb_change_save_set(connection, XCB_SET_MODE_INSERT, icon);
    xcb_reparent_window(connection, icon, window_, static_cast<std::int16_t>(place), 0);
    xcb_configure_window(connection, icon,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         geometry.data());
    constexpr std::uint32_t embeddedNotify = 0;
    send(connection, icon, XCB_EVENT_MASK_NO_EVENT,
         message(icon, x_.atom("_XEMBED"), {XCB_CURRENT_TIME, embeddedNotify, 0, window_, 0}));
    xcb_map_window(connection, icon);
    x_.sync();
    icons_.push_back(icon);
}

} // namespace rb
