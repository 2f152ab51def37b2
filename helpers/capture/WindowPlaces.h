#pragma once

#include "helpers/capture/Pixels.h"

#include <vector>
#include <xcb/xcb.h>

namespace rb {

class XConnection;

// A window that can be captured, with its frame, without the shadow that it may draw itself.
struct WindowPlace {
    xcb_window_t window = XCB_WINDOW_NONE; // the one below the root window
    xcb_window_t client = XCB_WINDOW_NONE; // the program's own inside it; the same where there is no frame
    PixelRect frame = {};                  // of `window`, with its border and its shadow
    int border = 0;                        // that the server draws around it
    PixelRect area = {};
    // Where it takes the pointer, within the screen; overlays that let everything through have nothing here.
    std::vector<PixelRect> input = {};
};

// The windows that are on the screen now, the topmost first, without the desktop and without `own`.
std::vector<WindowPlace> readWindowPlaces(XConnection& connection, xcb_window_t own);

// The topmost that takes the pointer there; null for none.
const WindowPlace* windowAt(const std::vector<WindowPlace>& windows, PixelPoint place);
// Whether a window above it covers a part of it, or a part is beyond the screen.
bool isCovered(const std::vector<WindowPlace>& windows, const WindowPlace& window, const PixelRect& screen);
// The one with the keyboard, as the window manager has it; null for none.
const WindowPlace* activeWindow(XConnection& connection, const std::vector<WindowPlace>& windows);

// Whether something composes the screen from the windows now: only then are those behind others kept whole, and
// translucent ones shown as such.
bool isComposed(XConnection& connection);

} // namespace rb
