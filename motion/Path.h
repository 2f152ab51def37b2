#pragma once

#include "motion/Geometry.h"

#include <vector>

namespace rb {

// An outline made of straight and curved segments, in the coordinates of the layer that shows it.
class Path {
public:
    enum class Verb { Move, Line, Quad, Cubic, Close };
    struct Segment {
        Verb verb;
        // Quad uses control1 and end, Cubic all three; Close none.
        Point control1;
        Point control2;
        Point end;
        friend bool operator==(const Segment&, const Segment&) = default;
    };

    Path& moveTo(Point end);
    Path& lineTo(Point end);
    Path& quadTo(Point control, Point end);
    Path& cubicTo(Point control1, Point control2, Point end);
    Path& close();

    // Circular corners; the radius is cut to half of the shorter side.
    static Path roundedRect(const Rect& rect, double radius);

    const std::vector<Segment>& segments() const { return segments_; }
    bool isEmpty() const { return segments_.empty(); }
    friend bool operator==(const Path&, const Path&) = default;

private:
    std::vector<Segment> segments_;
};

} // namespace rb
