#pragma once

#include <xcb/xcb.h>

namespace rb {

class XConnection;

// At most one program asks for a region or a window at a time on a display: it owns a selection as long as it asks,
// which goes with it however it ends. Main thread only.
class CaptureLock {
public:
    explicit CaptureLock(XConnection& connection)
        : connection_(connection) {}

    // False when another program has it.
    bool take();
    void release();
    bool isTaken();

private:
    XConnection& connection_;
    xcb_window_t window_ = XCB_WINDOW_NONE; // owns the selection; goes with the connection
};

} // namespace rb
