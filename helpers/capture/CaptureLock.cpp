#include "helpers/capture/CaptureLock.h"

#include "desktops/linux/XConnection.h"

namespace rb {

namespace {

constexpr const char* selection = "_ROOKBAY_CAPTURE";

} // namespace

bool CaptureLock::isTaken() {
    const auto cookie = xcb_get_selection_owner(connection_.get(), connection_.atom(selection));
    const XReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

bool CaptureLock::take() {
    xcb_connection_t* x = connection_.get();
    const xcb_atom_t atom = connection_.atom(selection);
    // Nobody comes between the question and the answer.
    xcb_grab_server(x);
    const bool free = !isTaken();
    if (free) {
        window_ = xcb_generate_id(x);
        xcb_create_window(x, XCB_COPY_FROM_PARENT, window_, connection_.root(), -1, -1, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(x, window_, atom, XCB_CURRENT_TIME);
    }
    xcb_ungrab_server(x);
    xcb_flush(x);
    return free;
}

void CaptureLock::release() {
    if (window_ != XCB_WINDOW_NONE) {
        xcb_destroy_window(connection_.get(), window_);
        window_ = XCB_WINDOW_NONE;
        // Whoever is started from here on must find it free.
        (void)isTaken();
    }
}

} // namespace rb
