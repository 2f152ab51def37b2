#include "desktops/linux/TrayHost.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/MenuBar.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/XConnection.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <xcb/damage.h>
#include <xcb/xfixes.h>

namespace rb {

namespace {

constexpr std::uint32_t requestDock = 0;
constexpr std::uint32_t horizontal = 0;

} // namespace

TrayHost::TrayHost(MenuBar& bar, XConnection& connection, const LinuxAppearance& appearance)
    : bar_(bar)
    , connection_(connection)
    , appearance_(appearance)
    , x_(qtConnection())
    , window_(xcb_generate_id(x_))
    , selection_(internAtom("_NET_SYSTEM_TRAY_S" + std::to_string(connection.screenNumber())))
    , opcode_(internAtom("_NET_SYSTEM_TRAY_OPCODE")) {
    const std::uint32_t overrideRedirect = 1;
    xcb_create_window(x_, XCB_COPY_FROM_PARENT, window_, connection_.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
    // Save sets that leave windows unmapped exist since version 4.
    xcb_discard_reply(x_, xcb_xfixes_query_version(x_, 4, 0).sequence);
    if (const auto* damage = xcb_get_extension_data(x_, &xcb_damage_id); damage != nullptr && damage->present != 0) {
        xcb_discard_reply(x_, xcb_damage_query_version(x_, 1, 1).sequence);
    }
    QCoreApplication::instance()->installNativeEventFilter(this);
}

TrayHost::~TrayHost() {
    if (auto* application = QCoreApplication::instance()) {
        application->removeNativeEventFilter(this);
    }
    clients_.clear();
    xcb_destroy_window(x_, window_); // and with it the selection goes
    xcb_flush(x_);
}

bool TrayHost::begin() {
    const XReply<xcb_get_selection_owner_reply_t> before(
        xcb_get_selection_owner_reply(x_, xcb_get_selection_owner(x_, selection_), nullptr));
    if (!before || before->owner != XCB_WINDOW_NONE) {
        return false;
    }
    xcb_change_property(x_, XCB_PROP_MODE_REPLACE, window_, internAtom("_NET_SYSTEM_TRAY_ORIENTATION"),
                        XCB_ATOM_CARDINAL, 32, 1, &horizontal);
    writeColors();
    const xcb_timestamp_t time = connection_.serverTime();
    xcb_set_selection_owner(x_, window_, selection_, time);
    const XReply<xcb_get_selection_owner_reply_t> after(
        xcb_get_selection_owner_reply(x_, xcb_get_selection_owner(x_, selection_), nullptr));
    owner_ = after && after->owner == window_;
    if (owner_) {
        announce(time);
    }
    return owner_;
}

// Programs that start before a tray wait for this message.
void TrayHost::announce(xcb_timestamp_t time) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = connection_.root();
    message.type = internAtom("MANAGER");
    message.data.data32[0] = time;
    message.data.data32[1] = selection_;
    message.data.data32[2] = window_;
    xcb_send_event(x_, 0, connection_.root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY, reinterpret_cast<const char*>(&message));
    xcb_flush(x_);
}

// Foreground, error, warning and success, for icons that recolour themselves; 16 bits a channel.
void TrayHost::writeColors() {
    const Theme& theme = appearance_.theme();
    std::array<std::uint32_t, 12> values{};
    std::size_t next = 0;
    for (const QColor& color : {theme.label, theme.destructive, theme.accent, theme.accent}) {
        for (const int channel : {color.red(), color.green(), color.blue()}) {
            values[next++] = static_cast<std::uint32_t>(channel) * 257U;
        }
    }
    xcb_change_property(x_, XCB_PROP_MODE_REPLACE, window_, internAtom("_NET_SYSTEM_TRAY_COLORS"), XCB_ATOM_CARDINAL,
                        32, static_cast<std::uint32_t>(values.size()), values.data());
}

void TrayHost::themeChanged() {
    writeColors();
    xcb_flush(x_);
}

bool TrayHost::nativeEventFilter(const QByteArray& /*type*/, void* message, qintptr* /*result*/) {
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    if ((event.response_type & 0x7F) == XCB_CLIENT_MESSAGE) {
        const auto& request = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (request.window == window_ && request.type == opcode_ && request.format == 32) {
            requested(request);
        }
    }
    const auto gone = [&event](const auto& client) { return client->handle(event) == TrayClient::Outcome::Gone; };
    const auto left = std::find_if(clients_.begin(), clients_.end(), gone);
    if (left != clients_.end()) {
        clients_.erase(left);
    }
    return false; // Qt knows nothing of these windows
}

void TrayHost::requested(const xcb_client_message_event_t& request) {
    // Balloon messages, the other request, are long out of use.
    if (owner_ && request.data.data32[1] == requestDock) {
        dock(request.data.data32[2]);
    }
}

void TrayHost::dock(xcb_window_t icon) {
    const bool known = std::any_of(clients_.begin(), clients_.end(), [icon](const auto& client) {
        return client->icon() == icon; // some icons ask twice
    });
    const bool ours = icon == connection_.root() || icon == window_ || QWidget::find(icon) != nullptr;
    if (known || ours || clients_.size() == mostIcons) {
        return;
    }
    if (auto client = TrayClient::embed(x_, icon, bar_, appearance_)) {
        clients_.push_back(std::move(client));
    }
}

} // namespace rb
