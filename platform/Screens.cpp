#include "platform/Screens.h"

#include <algorithm>

namespace rb {

std::optional<Screen> RBScreenAt(const Screens& screens, Point point) {
    const std::vector<Screen> all = screens.all();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [point](const Screen& screen) { return screen.frame.containsPointer(point); });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

Rect RBMenuBarBand(const Screen& screen, double statusBarThickness) {
    const double top = screen.frame.maxY();
    double height = top - screen.visibleFrame.maxY();
    if (height < 1) {
        height = std::max(screen.safeAreaTop, statusBarThickness);
    }
    return {screen.frame.x, top - height, screen.frame.width, height};
}

} // namespace rb
