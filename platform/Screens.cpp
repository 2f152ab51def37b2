#include "platform/Screens.h"

#include <algorithm>

namespace rb {

std::optional<Screen> RBScreenAt(const Screens& screens, Point point) {
    const std::vector<Screen> all = screens.all();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [point](const Screen& screen) { return screen.frame.containsPointer(point); });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

} // namespace rb
