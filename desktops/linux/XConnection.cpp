#include "desktops/linux/XConnection.h"

#include <QMetaObject>
#include <QSocketNotifier>
#include <cstdlib>
#include <cstring>

namespace rb {

void XFree::operator()(void* memory) const {
    std::free(memory);
}

std::unique_ptr<XConnection> XConnection::open() {
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::unique_ptr<XConnection>(new XConnection(connection, screenNumber));
}

XConnection::XConnection(xcb_connection_t* connection, int screenNumber)
    : connection_(connection)
    , screenNumber_(screenNumber) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (int skipped = 0; skipped < screenNumber && screens.rem > 1; ++skipped) {
        xcb_screen_next(&screens);
    }
    screen_ = screens.data;
}

XConnection::~XConnection() {
    notifier_.reset();
    xcb_disconnect(connection_);
}

xcb_atom_t XConnection::atom(const std::string& name) {
    if (const auto known = atoms_.find(name); known != atoms_.end()) {
        return known->second;
    }
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    if (!reply) {
        return XCB_ATOM_NONE;
    }
    atoms_.emplace(name, reply->atom);
    deliverQueuedEvents();
    return reply->atom;
}

std::vector<std::uint32_t> XConnection::cardinals(xcb_window_t window, xcb_atom_t property) {
    constexpr std::uint32_t longest = 65536; // four-byte units
    const auto cookie = xcb_get_property(connection_, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    deliverQueuedEvents();
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto bytes = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
    std::vector<std::uint32_t> values(bytes / sizeof(std::uint32_t));
    std::memcpy(values.data(), xcb_get_property_value(reply.get()), values.size() * sizeof(std::uint32_t));
    return values;
}

bool XConnection::isMapped(xcb_window_t window) {
    const auto cookie = xcb_get_window_attributes(connection_, window);
    const XReply<xcb_get_window_attributes_reply_t> reply(
        xcb_get_window_attributes_reply(connection_, cookie, nullptr));
    deliverQueuedEvents();
    return !reply || reply->map_state != XCB_MAP_STATE_UNMAPPED;
}

// Appending nothing to a property of a window of ours makes the server send the time with the change.
xcb_timestamp_t XConnection::serverTime() {
    if (timeWindow_ == XCB_WINDOW_NONE) {
        timeWindow_ = xcb_generate_id(connection_);
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, timeWindow_, root(), -1, -1, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    }
    xcb_change_property(connection_, XCB_PROP_MODE_APPEND, timeWindow_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0, "");
    xcb_flush(connection_);
    while (XReply<xcb_generic_event_t> event{xcb_wait_for_event(connection_)}) {
        if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY) {
            const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
            if (notify.window == timeWindow_) {
                deliverQueuedEvents();
                return notify.time;
            }
        }
        setAside_.push_back(std::move(event));
    }
    return XCB_CURRENT_TIME;
}

void XConnection::activate(xcb_window_t window) {
    constexpr std::uint32_t fromAPager = 2; // requests of applications are often turned down as focus stealing
    const xcb_timestamp_t time = serverTime();
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = fromAPager;
    message.data.data32[1] = time;
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 32, 1,
                        &time);
    xcb_send_event(connection_, 0, root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
}

Handle XConnection::onEvent(std::function<void(const xcb_generic_event_t&)> handler) {
    startListening();
    return observers_.add(std::move(handler));
}

void XConnection::startListening() {
    if (notifier_) {
        return;
    }
    notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { deliver(); });
    deliverQueuedEvents();
}

void XConnection::deliverQueuedEvents() {
    if (!notifier_) {
        return;
    }
    // Only what the library has read already; the notifier tells of the rest.
    if (XReply<xcb_generic_event_t> event{xcb_poll_for_queued_event(connection_)}) {
        setAside_.push_back(std::move(event));
    }
    if (!setAside_.empty()) {
        QMetaObject::invokeMethod(
            notifier_.get(), [this] { deliver(); }, Qt::QueuedConnection);
    }
}

void XConnection::deliver() {
    // A handler that waits for a reply sets events aside: those came before the ones that are still to be read.
    const auto next = [this] {
        XReply<xcb_generic_event_t> event;
        if (setAside_.empty()) {
            event.reset(xcb_poll_for_event(connection_));
        } else {
            event = std::move(setAside_.front());
            setAside_.erase(setAside_.begin());
        }
        return event;
    };
    while (const XReply<xcb_generic_event_t> event = next()) {
        observers_.notify(*event);
    }
    if (xcb_connection_has_error(connection_) != 0) {
        notifier_->setEnabled(false); // The server is gone; Qt ends the process. Don't spin until then.
    }
}

} // namespace rb
