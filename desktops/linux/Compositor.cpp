#include "desktops/linux/Compositor.h"

#include "desktops/linux/XConnection.h"

#include <string>
#include <utility>
#include <xcb/xfixes.h>

namespace rb {

bool Compositor::isRunning() {
    if (connection_ && !std::exchange(watched_, true)) {
        watch();
    }
    return running_;
}

void Compositor::watch() {
    xcb_connection_t* x = connection_->get();
    const xcb_atom_t selection = connection_->atom("_NET_WM_CM_S" + std::to_string(connection_->screenNumber()));
    const auto version = xcb_xfixes_query_version(x, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION);
    xcb_xfixes_select_selection_input(x, connection_->root(), selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const auto owner = xcb_get_selection_owner(x, selection);
    const XReply<xcb_xfixes_query_version_reply_t> known(xcb_xfixes_query_version_reply(x, version, nullptr));
    const XReply<xcb_get_selection_owner_reply_t> now(xcb_get_selection_owner_reply(x, owner, nullptr));
    running_ = now && now->owner != XCB_WINDOW_NONE;
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(x, &xcb_xfixes_id);
    if (!known || !extension || !extension->present) {
        return;
    }
    const int type = extension->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    events_ = connection_->onEvent([this, type, selection](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) != type) {
            return;
        }
        const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
        const bool running = notify.owner != XCB_WINDOW_NONE;
        if (notify.selection == selection && running != running_) {
            running_ = running;
            if (changed_) {
                changed_();
            }
        }
    });
    connection_->deliverQueuedEvents();
}

} // namespace rb
