#pragma once

#include <xcb/xcb.h>

namespace rb {

class XConnection;

// At most one program asks for a region or a window at a time on a display: it owns a selection, which goes with it
// however it ends. Main thread only.
class CaptureLock {
public:
    explicit CaptureLock(XConnection& connection)
        : connection_(connection) {}

    // False when another program has it.
    bool take();
    bool isTaken();

private:
    XConnection& connection_;
};

} // namespace rb
