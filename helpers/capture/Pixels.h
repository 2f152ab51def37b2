#pragma once

#include "desktops/linux/PixelMatch.h"

#include <algorithm>
#include <optional>

// Rectangles and places in pixels of the X screen, from its top left, y growing downwards. Pure functions.
namespace rb {

struct PixelPoint {
    int x = 0;
    int y = 0;
    friend bool operator==(const PixelPoint&, const PixelPoint&) = default;
};

inline bool contains(const PixelRect& rect, PixelPoint point) {
    return point.x >= rect.x && point.x < rect.x + rect.width && point.y >= rect.y && point.y < rect.y + rect.height;
}

inline bool isEmpty(const PixelRect& rect) {
    return rect.width <= 0 || rect.height <= 0;
}

// An empty rectangle when there is no common area.
inline PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const int right = std::min(a.x + a.width, b.x + b.width);
    const int bottom = std::min(a.y + a.height, b.y + b.height);
    return right > left && bottom > top ? PixelRect{left, top, right - left, bottom - top} : PixelRect{};
}

// The smallest rectangle around both; an empty one doesn't count.
inline PixelRect united(const PixelRect& a, const PixelRect& b) {
    if (isEmpty(a) || isEmpty(b)) {
        return isEmpty(a) ? b : a;
    }
    const int left = std::min(a.x, b.x);
    const int top = std::min(a.y, b.y);
    return {left, top, std::max(a.x + a.width, b.x + b.width) - left, std::max(a.y + a.height, b.y + b.height) - top};
}

inline PixelRect grown(const PixelRect& rect, int by) {
    return {rect.x - by, rect.y - by, rect.width + 2 * by, rect.height + 2 * by};
}

} // namespace rb
