#include "displays/WindowPlacement.h"

#include <algorithm>

namespace rb {

namespace {

constexpr Size leastOverlap{160, 100};
constexpr double lowestTop = 40;  // above the bottom of the visible frame
constexpr double highestTop = 24; // above its top

bool isWellPlaced(const Rect& frame, const Screen& screen) {
    const Rect overlap = frame.intersection(screen.visibleFrame);
    return overlap.width >= leastOverlap.width && overlap.height >= leastOverlap.height &&
           frame.maxY() >= screen.visibleFrame.minY() + lowestTop &&
           frame.maxY() <= screen.visibleFrame.maxY() + highestTop;
}

} // namespace

std::optional<Rect> betterFrame(const Rect& frame, const std::vector<Screen>& screens,
                                const std::optional<Screen>& mainScreen) {
    if (screens.empty() || std::any_of(screens.begin(), screens.end(),
                                       [&frame](const Screen& screen) { return isWellPlaced(frame, screen); })) {
        return std::nullopt;
    }
    const Rect& area = (mainScreen ? *mainScreen : screens.front()).visibleFrame;
    const double width = std::min(frame.width, area.width);
    const double height = std::min(frame.height, area.height);
    return Rect{area.midX() - width / 2, area.midY() - height / 2, width, height};
}

} // namespace rb
