#include "desktops/linux/Screens.h"
#include "desktops/linux/ScreenSpace.h"

#include <gtest/gtest.h>

namespace rb {

namespace {

TEST(Screens, StrutsTakeFromTheScreenThatTheyTouch) {
    const QRect left(0, 0, 1280, 800);
    const QRect right(1280, 0, 1920, 1080);
    const QSize desktop(3200, 1080);
    Strut panel; // along the top of the left screen
    panel.top = 24;
    panel.topEnd = 1279;
    // A dock at the bottom of the left screen, which is shorter than the desktop: it counts from the desktop's edge.
    Strut dock;
    dock.bottom = 280 + 48;
    dock.bottomEnd = 1279;
    Strut side; // at the right edge of the right screen
    side.right = 60;
    side.rightEnd = 1079;
    const std::vector<Strut> struts = {panel, dock, side};
    EXPECT_EQ(areaWithoutStruts(left, desktop, struts), QRect(0, 24, 1280, 800 - 24 - 48));
    EXPECT_EQ(areaWithoutStruts(right, desktop, struts), QRect(1280, 0, 1860, 1080));
}

TEST(Screens, AStrutBetweenScreensBelongsToTheFarOne) {
    const QRect upper(0, 0, 1280, 800);
    const QRect lower(0, 800, 1280, 800);
    Strut panel; // along the top of the lower screen, so it counts through the upper one
    panel.top = 830;
    panel.topEnd = 1279;
    EXPECT_EQ(areaWithoutStruts(upper, {1280, 1600}, {panel}), upper);
    EXPECT_EQ(areaWithoutStruts(lower, {1280, 1600}, {panel}), QRect(0, 830, 1280, 770));
}

TEST(Screens, CoordinatesTurnAroundThePrimaryScreensBottomLeft) {
    const ScreenSpace space(QRect(1280, 100, 1920, 1080)); // the primary screen stands right of another
    EXPECT_EQ(space.fromQt(QRectF(1280, 100, 1920, 1080)), (Rect{0, 0, 1920, 1080}));
    EXPECT_EQ(space.fromQt(QRectF(0, 0, 1280, 800)), (Rect{-1280, 380, 1280, 800}));
    const Rect primary{0, 0, 1920, 1080};
    EXPECT_EQ(space.fromQt(QPointF(1280, 100)), (Point{0, 1080}));
    EXPECT_TRUE(primary.containsPointer(space.fromQt(QPointF(1280, 100)))) << "the topmost row";
    EXPECT_TRUE(primary.containsPointer(space.fromQt(QPointF(1280, 1179)))) << "the lowest row";
    EXPECT_FALSE(primary.containsPointer(space.fromQt(QPointF(1280, 1180)))) << "the row below";
    const Rect rect{10, 20, 30, 40};
    EXPECT_EQ(space.fromQt(space.toQt(rect)), rect);
}

} // namespace

} // namespace rb
