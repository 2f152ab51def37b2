#pragma once

#include <optional>
#include <vector>

namespace rb {

// The layer on which the system shows open menus.
inline constexpr int PopUpMenuWindowLayer = 101;

// The windows of all programs. Main thread only.
class WindowList {
public:
    virtual ~WindowList() = default;
    // The layer of each window on the screen, elements of the desktop left out; nothing when the list can't be read.
    virtual std::optional<std::vector<int>> layersOnScreen() const = 0;
};

} // namespace rb
