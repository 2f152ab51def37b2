#include "motion/TimingCurve.h"

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

constexpr double tolerance = 1e-7;

// One coordinate of the curve and its slope; the end points are 0 and 1.
double coordinate(double control1, double control2, double s) {
    const double rest = 1 - s;
    return 3 * rest * rest * s * control1 + 3 * rest * s * s * control2 + s * s * s;
}
double slope(double control1, double control2, double s) {
    const double rest = 1 - s;
    return 3 * rest * rest * control1 + 6 * rest * s * (control2 - control1) + 3 * s * s * (1 - control2);
}

// The parameter at which the curve has this x. Newton's method is quick; where the curve is too flat for it,
// bisection always arrives, because x never falls along the curve.
double parameterFor(double x1, double x2, double x) {
    double s = x;
    for (int step = 0; step < 8; ++step) {
        const double error = coordinate(x1, x2, s) - x;
        if (std::abs(error) < tolerance) {
            return s;
        }
        const double rise = slope(x1, x2, s);
        if (std::abs(rise) < 1e-6) {
            break;
        }
        s -= error / rise;
    }
    double low = 0;
    double high = 1;
    while (high - low > tolerance) {
        s = (low + high) / 2;
        (coordinate(x1, x2, s) < x ? low : high) = s;
    }
    return s;
}

} // namespace

double TimingCurve::at(double fraction) const {
    const double x = std::clamp(fraction, 0.0, 1.0);
    if (x == 0 || x == 1 || *this == linear()) {
        return x;
    }
    return coordinate(control1.y, control2.y, parameterFor(control1.x, control2.x, x));
}

} // namespace rb
