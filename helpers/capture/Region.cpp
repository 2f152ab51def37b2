#include "helpers/capture/Region.h"

#include <cstdlib>

namespace rb {

namespace {

// A hand that clicks moves that much, in pixels.
constexpr int leastDrag = 3;

PixelPoint clamped(PixelPoint point, const PixelRect& bounds) {
    return {std::clamp(point.x, bounds.x, bounds.x + bounds.width - 1),
            std::clamp(point.y, bounds.y, bounds.y + bounds.height - 1)};
}

} // namespace

void RegionDrag::press(PixelPoint at) {
    anchor_ = corner_ = pointer_ = clamped(at, bounds_);
    dragging_ = true;
    hold(held_);
}

void RegionDrag::move(PixelPoint to) {
    pointer_ = clamped(to, bounds_);
    if (!dragging_) {
        return;
    }
    if (!held_) {
        corner_ = pointer_;
        return;
    }
    const PixelRect old = selection();
    const int x = std::clamp(pointer_.x - grip_.x, bounds_.x, bounds_.x + bounds_.width - old.width);
    const int y = std::clamp(pointer_.y - grip_.y, bounds_.y, bounds_.y + bounds_.height - old.height);
    anchor_ = {anchor_.x + x - old.x, anchor_.y + y - old.y};
    corner_ = {corner_.x + x - old.x, corner_.y + y - old.y};
}

void RegionDrag::hold(bool held) {
    held_ = held;
    const PixelRect now = selection();
    grip_ = {pointer_.x - now.x, pointer_.y - now.y};
}

PixelRect RegionDrag::selection() const {
    if (!dragging_) {
        return {};
    }
    return {std::min(anchor_.x, corner_.x), std::min(anchor_.y, corner_.y), std::abs(corner_.x - anchor_.x) + 1,
            std::abs(corner_.y - anchor_.y) + 1};
}

PixelRect RegionDrag::release() {
    const PixelRect drawn = selection();
    dragging_ = false;
    return drawn.width > leastDrag || drawn.height > leastDrag ? drawn : PixelRect{};
}

std::string sizeText(const PixelRect& rect) {
    return std::to_string(rect.width) + " × " + std::to_string(rect.height);
}

PixelRect labelPlace(const PixelRect& selection, int width, int height, const PixelRect& screen, int gap) {
    const int right = screen.x + screen.width - gap - width;
    const int bottom = screen.y + screen.height - gap - height;
    const int x = std::max(screen.x + gap, std::min(selection.x + (selection.width - width) / 2, right));
    const int below = selection.y + selection.height + gap;
    const int above = selection.y - gap - height;
    int y = below;
    if (y > bottom) {
        y = above >= screen.y + gap ? above : selection.y + selection.height - gap - height;
    }
    return {x, std::max(screen.y + gap, std::min(y, bottom)), width, height};
}

} // namespace rb
