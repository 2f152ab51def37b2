#pragma once

#include "platform/Observers.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

class QSocketNotifier;

namespace rb {

// Frees what xcb allocated. Every reply may be null: the server can refuse or go away.
struct XFree {
    void operator()(void* memory) const;
};
template <typename Reply>
using XReply = std::unique_ptr<Reply, XFree>;

// The program's own connection to the X server, beside Qt's: errors and events of ours can't be mixed up with Qt's,
// and it tells whether there is a server before Qt would end the process. Main thread only.
class XConnection {
public:
    // Null when no X server answers under $DISPLAY.
    static std::unique_ptr<XConnection> open();
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    int screenNumber() const { return screenNumber_; }

    // XCB_ATOM_NONE when the server is gone.
    xcb_atom_t atom(const std::string& name);
    // A window's property as 32-bit values; empty when absent or of another format.
    std::vector<std::uint32_t> cardinals(xcb_window_t window, xcb_atom_t property);

    // Whether the server shows the window or would, were its parents shown. True when it can't be asked.
    bool isMapped(xcb_window_t window);
    // The server's time now, as window managers want it for activation requests; 0 when the server is gone.
    xcb_timestamp_t serverTime();
    // Asks the window manager to bring the window to the front and give it the focus, whoever has it now.
    void activate(xcb_window_t window);

    // Events of this connection, from the event loop on. The first handler starts the listening, so Qt's
    // application must exist.
    Handle onEvent(std::function<void(const xcb_generic_event_t&)> handler);
    // Events that came in while a reply was awaited are delivered in a later turn of the event loop. To be called
    // after requests that wait for replies, once the listening has begun.
    void deliverQueuedEvents();
    // Hands out all that has come in, at once: for who waits after the event loop has ended.
    void deliver();

private:
    XConnection(xcb_connection_t* connection, int screenNumber);
    void startListening();

    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
    int screenNumber_ = 0;
    xcb_window_t timeWindow_ = XCB_WINDOW_NONE; // property changes on it fetch the server's time
    std::map<std::string, xcb_atom_t> atoms_;
    std::unique_ptr<QSocketNotifier> notifier_;
    Observers<const xcb_generic_event_t&> observers_;
    // Events taken from the connection while the server's time was awaited.
    std::vector<XReply<xcb_generic_event_t>> setAside_;
};

} // namespace rb
