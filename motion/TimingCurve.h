#pragma once

#include "motion/Geometry.h"

namespace rb {

// A cubic Bézier pacing from (0,0) to (1,1). A pure function of its input.
struct TimingCurve {
    Point control1{0, 0};
    Point control2{1, 1};

    // Progress for a time fraction; input outside 0…1 is clamped.
    double at(double fraction) const;

    static constexpr TimingCurve linear() { return {{0, 0}, {1, 1}}; }
    static constexpr TimingCurve easeIn() { return {{0.42, 0}, {1, 1}}; }
    static constexpr TimingCurve easeOut() { return {{0, 0}, {0.58, 1}}; }
    static constexpr TimingCurve easeInEaseOut() { return {{0.42, 0}, {0.58, 1}}; }
    friend bool operator==(const TimingCurve&, const TimingCurve&) = default;
};

// The shared ease-out of the whole product.
inline constexpr TimingCurve RBEaseOut{{0.2, 0.9}, {0.25, 1.0}};

} // namespace rb
