#include "motion/Path.h"

#include <algorithm>

namespace rb {

namespace {

// Distance of the control points of a cubic that comes closest to a quarter of a circle, in radii.
constexpr double circleControl = 0.5522847498307936;

} // namespace

Path& Path::moveTo(Point end) {
    segments_.push_back({Verb::Move, {}, {}, end});
    return *this;
}

Path& Path::lineTo(Point end) {
    segments_.push_back({Verb::Line, {}, {}, end});
    return *this;
}

Path& Path::quadTo(Point control, Point end) {
    segments_.push_back({Verb::Quad, control, {}, end});
    return *this;
}

Path& Path::cubicTo(Point control1, Point control2, Point end) {
    segments_.push_back({Verb::Cubic, control1, control2, end});
    return *this;
}

Path& Path::close() {
    segments_.push_back({Verb::Close, {}, {}, {}});
    return *this;
}

Path Path::roundedRect(const Rect& rect, double radius) {
    const double r = std::max(0.0, std::min({radius, rect.width / 2, rect.height / 2}));
    const double left = rect.minX();
    const double right = rect.maxX();
    const double bottom = rect.minY();
    const double top = rect.maxY();
    Path path;
    if (r == 0) {
        return path.moveTo({left, bottom}).lineTo({right, bottom}).lineTo({right, top}).lineTo({left, top}).close();
    }
    const double c = r * (1 - circleControl);
    return path.moveTo({left + r, bottom})
        .lineTo({right - r, bottom})
        .cubicTo({right - c, bottom}, {right, bottom + c}, {right, bottom + r})
        .lineTo({right, top - r})
        .cubicTo({right, top - c}, {right - c, top}, {right - r, top})
        .lineTo({left + r, top})
        .cubicTo({left + c, top}, {left, top - c}, {left, top - r})
        .lineTo({left, bottom + r})
        .cubicTo({left, bottom + c}, {left + c, bottom}, {left + r, bottom})
        .close();
}

} // namespace rb
