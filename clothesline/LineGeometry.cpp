#include "clothesline/LineGeometry.h"

#include <algorithm>
#include <cmath>

namespace rb::LineGeometry {

namespace {

constexpr double ropeEnds = 200;
constexpr double ropeOverhang = 20;
// From the rope up to the anchor.
constexpr double anchorRise = 9.5;
// From the anchor down to the card's top edge.
constexpr double cardDrop = 14;

} // namespace

double sag(double width) {
    return std::min(30.0, 0.018 * width);
}

std::size_t capacity(double width) {
    const auto fitting = static_cast<std::size_t>(std::floor(std::max(0.0, width - 60) / slotWidth));
    return fitting >= 4 ? fitting : 3;
}

Path ropePath(double width) {
    Path path;
    path.moveTo({-ropeOverhang, ropeEnds});
    path.quadTo({width / 2, ropeEnds - 2 * sag(width)}, {width + ropeOverhang, ropeEnds});
    return path;
}

double anchorHeight(double x, double width) {
    double below = height - ropeEnds - anchorRise;
    if (width > 0) {
        const double t = x / width;
        below += 4 * sag(width) * t * (1 - t);
    }
    return height - below;
}

Point anchor(std::size_t index, std::size_t count, double width) {
    const double gaps = count > 1 ? static_cast<double>(count - 1) : 0;
    const double spacing = count <= 1 ? slotWidth : std::min(slotWidth, std::max(0.0, width - 200) / gaps);
    const double x = static_cast<double>(index) * spacing + (width / 2 - gaps * spacing / 2);
    return {x, anchorHeight(x, width)};
}

Rect cardRect(Size cardSize, Point anchor) {
    return {anchor.x - cardSize.width / 2, anchor.y - cardDrop - cardSize.height, cardSize.width, cardSize.height};
}

} // namespace rb::LineGeometry
