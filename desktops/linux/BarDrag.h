#pragma once

#include "platform/Handle.h"

#include <functional>
#include <xcb/xcb.h>

namespace rb {

class XConnection;

// Dragging within a window of ours while the Super key is held, also from the windows of other programs inside it,
// which never see these presses. Main thread only.
class BarDrag {
public:
    struct Listener {
        // Positions across the window, in pixels from its left edge.
        std::function<void(int x)> began;
        std::function<void(int x)> moved;
        std::function<void()> ended;
    };

    // The connection outlives it; the window must exist and outlive it.
    BarDrag(XConnection& connection, xcb_window_t window, Listener listener);
    ~BarDrag();
    BarDrag(const BarDrag&) = delete;
    BarDrag& operator=(const BarDrag&) = delete;

private:
    void handle(const xcb_generic_event_t& event);

    XConnection& connection_;
    xcb_window_t window_;
    Listener listener_;
    bool dragging_ = false;
    Handle events_;
};

} // namespace rb
