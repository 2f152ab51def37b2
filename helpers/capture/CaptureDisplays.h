#pragma once

#include "helpers/capture/Pixels.h"
#include "motion/Geometry.h"

#include <string>
#include <vector>

namespace rb {

class XConnection;

// A screen of the user's as the X server has it.
struct CaptureDisplay {
    std::string name = {}; // of the output
    PixelRect pixels = {};
    double ratio = 1; // pixels a point
    bool primary = false;
};

// At least one: without any knowledge of screens the whole of the X screen is one. Ratios are 1 before
// takeRatiosFromQt().
std::vector<CaptureDisplay> readDisplays(XConnection& connection);
// As the rest of Rook Bay has it: what a point is and which screen is the primary one. After Qt's application exists.
void takeRatiosFromQt(std::vector<CaptureDisplay>& displays);

// The display under a place, else the primary one.
const CaptureDisplay& displayAt(const std::vector<CaptureDisplay>& displays, PixelPoint place);
PixelRect unionOf(const std::vector<CaptureDisplay>& displays);
// In points from the top left of the primary display, y growing downwards. Points are counted from the top left of
// the display in whose middle the rectangle lies.
Rect pointsOf(const PixelRect& rect, const std::vector<CaptureDisplay>& displays);

// Whether the server is the one that Wayland sessions keep for X programs, which can't show what is on the screen.
bool belongsToWayland(const std::vector<CaptureDisplay>& displays);

} // namespace rb
