#include "desktops/linux/DragPasteboard.h"

#include "desktops/linux/UriList.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <string_view>
#include <xcb/xfixes.h>

namespace rb {

namespace {

constexpr double patience = 0.15;        // seconds for the source's answer
constexpr std::uint32_t longest = 65536; // four-byte units
constexpr const char* uriList = "text/uri-list";

} // namespace

std::int64_t LinuxDragPasteboard::changeCount() const {
    if (!watching_) {
        const_cast<LinuxDragPasteboard*>(this)->watch();
    }
    return changeCount_;
}

void LinuxDragPasteboard::watch() {
    watching_ = true;
    xcb_connection_t* x = connection_.get();
    const XReply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        x, xcb_xfixes_query_version(x, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION), nullptr));
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(x, &xcb_xfixes_id);
    if (!version || !extension || extension->present == 0) {
        return;
    }
    notifyType_ = extension->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    window_ = xcb_generate_id(x);
    xcb_create_window(x, XCB_COPY_FROM_PARENT, window_, connection_.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
    xcb_xfixes_select_selection_input(x, connection_.root(), connection_.atom("XdndSelection"),
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    xcb_flush(x);
    connection_.deliverQueuedEvents();
}

void LinuxDragPasteboard::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    if (type == notifyType_) {
        const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
        if (notify.selection == connection_.atom("XdndSelection") && notify.owner != XCB_WINDOW_NONE) {
            ask(notify.owner, notify.selection_timestamp);
        }
        return;
    }
    if (type == XCB_SELECTION_NOTIFY && owner_ != XCB_WINDOW_NONE) {
        const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
        // Refusals of some programs don't say what they refuse.
        if (notify.requestor == window_ && notify.selection == connection_.atom("XdndSelection")) {
            answerFrom(notify.property);
        }
    }
}

void LinuxDragPasteboard::ask(xcb_window_t owner, xcb_timestamp_t time) {
    owner_ = owner;
    const xcb_atom_t property = connection_.atom("ROOKBAY_DRAG");
    xcb_convert_selection(connection_.get(), window_, connection_.atom("XdndSelection"), connection_.atom(uriList),
                          property, time);
    xcb_flush(connection_.get());
    patience_ = loop_.after(patience, [this] { answerFromTypeList(); });
}

void LinuxDragPasteboard::answerFrom(xcb_atom_t property) {
    if (property == XCB_ATOM_NONE) {
        answerFromTypeList();
        return;
    }
    xcb_connection_t* x = connection_.get();
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        x, xcb_get_property(x, 1, window_, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longest), nullptr));
    connection_.deliverQueuedEvents();
    if (!reply) {
        answerFromTypeList();
        return;
    }
    const std::string_view list(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    // A list too long for one property comes in pieces, which the drop will read.
    const bool inPieces = reply->type == connection_.atom("INCR");
    answered({inPieces || !localFilesOf(list).empty() ? FileURLDragType : URLDragType});
}

void LinuxDragPasteboard::answerFromTypeList() {
    const auto list = connection_.cardinals(owner_, connection_.atom("XdndTypeList"));
    if (list.empty()) {
        answered({});
        return;
    }
    const bool files = std::find(list.begin(), list.end(), connection_.atom(uriList)) != list.end();
    answered({files ? FileURLDragType : "public.data"});
}

void LinuxDragPasteboard::answered(std::vector<std::string> types) {
    patience_.reset();
    owner_ = XCB_WINDOW_NONE;
    types_ = std::move(types);
    ++changeCount_;
}

} // namespace rb
