#pragma once

#include "motion/Geometry.h"
#include "motion/Path.h"

#include <cstddef>

// The line's shape: where the rope sags, where cards hang from it and how many fit. Pure functions of the line's
// width; coordinates are the root view's, origin at the bottom left, y growing upwards, points.
namespace rb::LineGeometry {

inline constexpr double height = 210;
// How far the line slides up to be out of sight.
inline constexpr double hiddenOffset = 222;
// A card's share of the line, from peg to peg.
inline constexpr double slotWidth = 174;

// How far the rope's middle hangs below its ends.
double sag(double width);
// At least 3, also before the line has a width.
std::size_t capacity(double width);
Path ropePath(double width);
// The height at which a card hangs at x: over the rope, so that the peg covers it.
double anchorHeight(double x, double width);
// The row is centred; beyond what fits it is squeezed to leave 100 points free at each side.
Point anchor(std::size_t index, std::size_t count, double width);
// A card's face, hanging from its anchor.
Rect cardRect(Size cardSize, Point anchor);

} // namespace rb::LineGeometry
