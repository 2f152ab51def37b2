#pragma once

#include <algorithm>
#include <cmath>

// Points, sizes and rectangles in AppKit's vocabulary: doubles, in points, y growing upwards unless a
// declaration says otherwise. Plain values, usable on any thread.
namespace rb {

struct Point {
    double x = 0;
    double y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

struct Insets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
    friend bool operator==(const Insets&, const Insets&) = default;
};

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }
    double midX() const { return x + width / 2; }
    double maxX() const { return x + width; }
    double minY() const { return y; }
    double midY() const { return y + height / 2; }
    double maxY() const { return y + height; }
    Point origin() const { return {x, y}; }
    Size size() const { return {width, height}; }
    bool isEmpty() const { return width <= 0 || height <= 0; }

    // Half open on the upper sides, so that adjoining rectangles never share a point.
    bool contains(Point p) const { return p.x >= x && p.x < maxX() && p.y >= y && p.y < maxY(); }
    // The pointer's reading of containment: a pointer on the topmost row of pixels reports the upper edge
    // itself (y == maxY), one on the lowest row reports minY + 1. So the upper edge counts, the lower doesn't.
    bool containsPointer(Point p) const { return p.x >= x && p.x < maxX() && p.y > y && p.y <= maxY(); }

    // Positive values shrink the rectangle on both sides, negative ones grow it.
    Rect inset(double dx, double dy) const { return {x + dx, y + dy, width - 2 * dx, height - 2 * dy}; }
    Rect offset(double dx, double dy) const { return {x + dx, y + dy, width, height}; }
    // The common area, or an empty rectangle at the origin when there is none.
    Rect intersection(const Rect& other) const {
        const double left = std::max(x, other.x);
        const double bottom = std::max(y, other.y);
        const double right = std::min(maxX(), other.maxX());
        const double top = std::min(maxY(), other.maxY());
        return right > left && top > bottom ? Rect{left, bottom, right - left, top - bottom} : Rect{};
    }
    friend bool operator==(const Rect&, const Rect&) = default;
};

} // namespace rb
