#pragma once

#include "tests/session/frame/XClient.h"

#include <string>
#include <vector>

namespace rb {

// A small system tray as other desktops have one: owns the tray selection and takes icons in (XEmbed), side by side in
// a window at the lower right. Works whenever icons() is asked; ends with this object, as a tray that crashes.
class TrayManager {
public:
    explicit TrayManager(const std::string& display);

    // The icons that are docked and mapped now.
    const std::vector<xcb_window_t>& icons();
    xcb_window_t window() const { return window_; }

private:
    void dock(xcb_window_t icon);

    XClient x_;
    xcb_window_t window_ = 0;
    xcb_atom_t opcode_ = 0;
    std::vector<xcb_window_t> icons_;
};

} // namespace rb
