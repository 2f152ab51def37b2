#pragma once

#include "motion/Geometry.h"
#include "platform/Handle.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rb {

struct Screen {
    std::uint32_t id = 0;   // stays with the display while it is connected
    Rect frame = {};        // screen coordinates
    Rect visibleFrame = {}; // the frame without menu bar and docks
    double backingScaleFactor = 1;
    double safeAreaTop = 0; // height kept free for a camera housing
    std::string localizedName = {};
    friend bool operator==(const Screen&, const Screen&) = default;
};

// The connected screens. Screen coordinates are points with the origin at the bottom left of the primary
// screen, which is the first of the list. Main thread only.
class Screens {
public:
    virtual ~Screens() = default;
    virtual std::vector<Screen> all() const = 0;
    // The screen with the keyboard focus, else the first; nothing without screens.
    virtual std::optional<Screen> main() const = 0;
    // A program fills that screen by itself, without a menu bar; false where the system doesn't tell.
    virtual bool showsFullScreenSpace(std::uint32_t id) const = 0;
    // Screens came, went, moved or changed their visible frame; the list is already current.
    virtual Handle onChange(std::function<void()> changed) = 0;
};

// The screen whose frame contains a pointer location, or nothing.
std::optional<Screen> RBScreenAt(const Screens& screens, Point point);

// The band of the menu bar along a screen's top, in screen coordinates. Where the bar is hidden it is as high as a
// bar would be.
Rect RBMenuBarBand(const Screen& screen, double statusBarThickness);

} // namespace rb
