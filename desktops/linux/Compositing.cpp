#include "desktops/linux/Compositing.h"

#include "desktops/linux/XConnection.h"

#include <QGuiApplication>

namespace rb {

bool isComposited() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11) {
        return false;
    }
    xcb_connection_t* connection = x11->connection();
    // One manager per screen; programs of today run on the first.
    constexpr char name[] = "_NET_WM_CM_S0";
    const XReply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, sizeof(name) - 1, name), nullptr));
    if (!atom) {
        return false;
    }
    const XReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace rb
