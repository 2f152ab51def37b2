#include "desktops/linux/DragPasteboard.h"

#include "desktops/linux/UriList.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <string_view>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

namespace rb {

namespace {

constexpr double patience = 0.15;        // seconds for the source's answer
constexpr std::uint32_t longest = 65536; // four-byte units
constexpr std::uint32_t escapeKeycode = 9;
constexpr const char* nothingOfOurs = "public.data";
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
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    if (const auto* input = xcb_get_extension_data(x, &xcb_input_id); input && input->present != 0) {
        const XReply<xcb_input_xi_query_version_reply_t> known(
            xcb_input_xi_query_version_reply(x, xcb_input_xi_query_version(x, 2, 2), nullptr));
        inputOpcode_ = known ? input->major_opcode : std::uint8_t{0};
    }
    xcb_flush(x);
    connection_.deliverQueuedEvents();
}

void LinuxDragPasteboard::handle(const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    if (type == notifyType_) {
        const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
        if (notify.selection != connection_.atom("XdndSelection")) {
            return;
        }
        // Some programs give the selection up at the end, and a dead one has lost it.
        const bool begins =
            notify.subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER && notify.owner != XCB_WINDOW_NONE;
        over_ = !begins;
        watchInput(begins);
        if (begins) {
            ask(notify.owner, notify.selection_timestamp);
        }
        return;
    }
    if (type == XCB_GE_GENERIC && inputOpcode_ != 0) {
        handleInput(reinterpret_cast<const xcb_ge_generic_event_t&>(event));
        return;
    }
    if (type == XCB_SELECTION_NOTIFY && owner_ != XCB_WINDOW_NONE) {
        const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
        // Refusals of some programs don't say what they refuse.
        if (notify.requestor == window_ && notify.selection == connection_.atom("XdndSelection")) {
            const bool refused = notify.property == XCB_ATOM_NONE && notify.target == connection_.atom(uriList);
            // A refusal that says of what is an answer; others only mean that this program doesn't answer in mid-drag.
            if (refused) {
                answered({nothingOfOurs});
            } else {
                answerFrom(notify.property);
            }
        }
    }
}

void LinuxDragPasteboard::watchInput(bool on) {
    if (inputOpcode_ == 0) {
        return;
    }
    // Under another device number than the monitors of mouse events, whose selection this mustn't replace.
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL, 1},
                on ? std::uint32_t{XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE}
                   : 0U};
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &selection.head);
    xcb_flush(connection_.get());
}

void LinuxDragPasteboard::handleInput(const xcb_ge_generic_event_t& event) {
    if (event.extension != inputOpcode_) {
        return;
    }
    if (event.event_type == XCB_INPUT_RAW_KEY_PRESS &&
        reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event).detail == escapeKeycode) {
        over_ = true;
        watchInput(false);
    } else if (event.event_type == XCB_INPUT_RAW_BUTTON_RELEASE) {
        watchInput(false);
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
    if (list.find_first_not_of("\r\n ") == std::string_view::npos && reply->type != connection_.atom("INCR")) {
        answered({nothingOfOurs});
        return;
    }
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
    answered({files ? FileURLDragType : nothingOfOurs});
}

void LinuxDragPasteboard::answered(std::vector<std::string> types) {
    patience_.reset();
    owner_ = XCB_WINDOW_NONE;
    types_ = std::move(types);
    ++changeCount_;
}

} // namespace rb
