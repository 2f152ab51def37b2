#include "desktops/linux/QtX11.h"

#include "desktops/linux/XConnection.h"

#include <QGuiApplication>

#include <string>

namespace rb {

xcb_connection_t* qtConnection() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t internAtom(std::string_view name) {
    xcb_connection_t* x = qtConnection();
    if (!x) {
        return XCB_ATOM_NONE;
    }
    const auto length = static_cast<std::uint16_t>(name.size());
    const XReply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(x, xcb_intern_atom(x, 0, length, name.data()), nullptr));
    return atom ? atom->atom : xcb_atom_t{XCB_ATOM_NONE};
}

bool isComposited() {
    xcb_connection_t* x = qtConnection();
    // One manager per screen; programs of today run on the first.
    const xcb_atom_t selection = internAtom("_NET_WM_CM_S0");
    if (!x || selection == XCB_ATOM_NONE) {
        return false;
    }
    const XReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(x, xcb_get_selection_owner(x, selection), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

void setCardinals(const QWidget& window, std::string_view property, const std::vector<std::uint32_t>& values) {
    if (xcb_connection_t* x = qtConnection()) {
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()), internAtom(property),
                            XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(values.size()), values.data());
    }
}

void setWindowClass(const QWidget& window, std::string_view name) {
    if (xcb_connection_t* x = qtConnection()) {
        // Instance and class, each with its end.
        std::string text(name);
        text += '\0';
        text += text;
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()), XCB_ATOM_WM_CLASS,
                            XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(text.size()), text.data());
    }
}

void flushQt() {
    if (xcb_connection_t* x = qtConnection()) {
        xcb_flush(x);
    }
}

} // namespace rb
