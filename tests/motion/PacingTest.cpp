// Springs against an independent integration of their equation of motion; curves against known points.

#include "motion/Path.h"
#include "motion/Spring.h"
#include "motion/TimingCurve.h"

#include <gtest/gtest.h>

#include <cmath>

namespace rb {
namespace {

// Integrates m x'' = k (1 − x) − c x' by Runge and Kutta's method, calling visit(t, x) at every step.
template <typename Visit>
void integrate(const Spring& spring, double until, Visit visit) {
    constexpr double step = 1e-4;
    const auto force = [&spring](double x, double v) {
        return (spring.stiffness * (1 - x) - spring.damping * v) / spring.mass;
    };
    double x = 0;
    double v = spring.initialVelocity;
    for (int i = 0; i * step <= until; ++i) {
        visit(i * step, x);
        const double v1 = v;
        const double a1 = force(x, v1);
        const double v2 = v + step / 2 * a1;
        const double a2 = force(x + step / 2 * v1, v2);
        const double v3 = v + step / 2 * a2;
        const double a3 = force(x + step / 2 * v2, v3);
        const double v4 = v + step * a3;
        const double a4 = force(x + step * v3, v4);
        x += step / 6 * (v1 + 2 * v2 + 2 * v3 + v4);
        v += step / 6 * (a1 + 2 * a2 + 2 * a3 + a4);
    }
}

class SpringTest : public testing::TestWithParam<Spring> {};

TEST_P(SpringTest, FollowsItsEquationOfMotion) {
    integrate(GetParam(), 4, [](double t, double x) { ASSERT_NEAR(GetParam().at(t), x, 1e-6) << "at " << t << " s"; });
}

TEST_P(SpringTest, StaysWithinAThousandthOnceSettledAndIsNotSettledLongBefore) {
    const double settled = GetParam().settlingDuration();
    ASSERT_GT(settled, 0);
    double lastOutside = 0;
    integrate(GetParam(), settled + 2, [&](double t, double x) {
        if (std::abs(1 - x) > 0.001 + 1e-7) {
            lastOutside = t;
        }
    });
    EXPECT_LE(lastOutside, settled);
    // The envelope may touch the swing up to half an oscillation later than the swing itself.
    EXPECT_GT(lastOutside, settled * 0.8);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SpringTest,
                         testing::Values(Spring{1, 220, 17, 0}, Spring{1, 38, 2.4, 0}, Spring{1, 224, 24.5, 0},
                                         Spring{2, 100, 10, 3}, Spring{1, 100, 20, 0}, Spring{1, 100, 20, 25},
                                         Spring{1, 100, 20, -12}, Spring{1, 100, 20.0001, 4}, Spring{1, 100, 45, 0},
                                         Spring{1, 100, 45, 60}, Spring{1, 100, 45, -9}),
                         [](const auto& parameter) {
                             const Spring& spring = parameter.param;
                             const double ratio = spring.damping / (2 * std::sqrt(spring.stiffness * spring.mass));
                             const std::string kind = ratio < 1   ? "UnderDamped"
                                                      : ratio > 1 ? "OverDamped"
                                                                  : "CriticallyDamped";
                             return kind + std::to_string(parameter.index);
                         });

TEST(Spring, RestsBeforeItsBeginningAndSettlesInFiniteTimeWithoutDamping) {
    EXPECT_EQ(Spring{}.at(-1), 0);
    EXPECT_EQ(Spring{}.at(0), 0);
    const Spring undamped{1, 100, 0, 0};
    EXPECT_NEAR(undamped.at(0.2), 1 - std::cos(2.0), 1e-12);
    EXPECT_TRUE(std::isfinite(undamped.settlingDuration()));
}

// A Bézier is easy to evaluate forwards: every point of it must be found back from its time.
TEST(TimingCurve, FindsEveryPointOfTheCurve) {
    const TimingCurve curves[] = {TimingCurve::easeIn(),
                                  TimingCurve::easeOut(),
                                  TimingCurve::easeInEaseOut(),
                                  RBEaseOut,
                                  {{0.55, 0.055}, {0.675, 0.19}},
                                  {{0.9, -0.5}, {0.1, 1.5}},
                                  {{1, 0}, {0, 1}}};
    for (const TimingCurve& curve : curves) {
        for (int i = 0; i <= 200; ++i) {
            const double s = i / 200.0;
            const double b1 = 3 * s * (1 - s) * (1 - s);
            const double b2 = 3 * s * s * (1 - s);
            const double x = b1 * curve.control1.x + b2 * curve.control2.x + s * s * s;
            const double y = b1 * curve.control1.y + b2 * curve.control2.y + s * s * s;
            // {1,0},{0,1} is vertical in its middle, where any y answers to the same x.
            const double tolerance = curve.control1.x == 1 && std::abs(s - 0.5) < 0.05 ? 0.1 : 1e-4;
            ASSERT_NEAR(curve.at(x), y, tolerance) << "x " << x;
        }
    }
}

TEST(TimingCurve, IsExactAtItsEndsAndClampsBeyond) {
    EXPECT_EQ(RBEaseOut.at(-0.5), 0);
    EXPECT_EQ(RBEaseOut.at(0), 0);
    EXPECT_EQ(RBEaseOut.at(1), 1);
    EXPECT_EQ(RBEaseOut.at(7), 1);
    EXPECT_EQ(TimingCurve::linear().at(0.3), 0.3);
    EXPECT_NEAR(TimingCurve::easeInEaseOut().at(0.5), 0.5, 1e-6);
}

TEST(Path, CutsTheCornerRadiusToHalfOfTheShorterSide) {
    EXPECT_EQ(Path::roundedRect({0, 0, 40, 10}, 99), Path::roundedRect({0, 0, 40, 10}, 5));
    EXPECT_EQ(Path::roundedRect({0, 0, 40, 10}, -3), Path::roundedRect({0, 0, 40, 10}, 0));
    // The middle of each corner lies on its circle.
    const Path path = Path::roundedRect({0, 0, 40, 30}, 10);
    int corners = 0;
    Point from;
    for (const Path::Segment& segment : path.segments()) {
        if (segment.verb == Path::Verb::Cubic) {
            const double x = (from.x + 3 * segment.control1.x + 3 * segment.control2.x + segment.end.x) / 8;
            const double y = (from.y + 3 * segment.control1.y + 3 * segment.control2.y + segment.end.y) / 8;
            EXPECT_NEAR(std::hypot(x - (x < 20 ? 10 : 30), y - (y < 15 ? 10 : 20)), 10, 0.01);
            ++corners;
        }
        from = segment.end;
    }
    EXPECT_EQ(corners, 4);
}

} // namespace
} // namespace rb
