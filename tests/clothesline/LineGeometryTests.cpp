#include "clothesline/LineGeometry.h"

#include <gtest/gtest.h>

namespace rb {
namespace {

TEST(LineGeometry, AsManyCardsFitAsHaveASlotButAlwaysThree) {
    EXPECT_EQ(LineGeometry::capacity(0), 3U);
    EXPECT_EQ(LineGeometry::capacity(582), 3U);
    EXPECT_EQ(LineGeometry::capacity(755), 3U);
    EXPECT_EQ(LineGeometry::capacity(756), 4U);
    EXPECT_EQ(LineGeometry::capacity(1512), 8U);
}

TEST(LineGeometry, TheRopeSagsInTheMiddleAndOverhangsBothEdges) {
    EXPECT_DOUBLE_EQ(LineGeometry::sag(1512), 27.216);
    EXPECT_DOUBLE_EQ(LineGeometry::sag(5120), 30);
    const auto rope = LineGeometry::ropePath(1512).segments();
    ASSERT_EQ(rope.size(), 2U);
    EXPECT_EQ(rope[0].end, (Point{-20, 200}));
    EXPECT_EQ(rope[1].end, (Point{1532, 200}));
    // A quadratic curve passes half way between its ends and its control point.
    EXPECT_DOUBLE_EQ((200 + rope[1].control1.y) / 2, 172.784);
}

TEST(LineGeometry, CardsHangCentredAndSqueezeWhenManyHang) {
    EXPECT_EQ(LineGeometry::anchor(0, 1, 1512), (Point{756, 182.284}));
    const double fiveCards[] = {152, 326, 500, 674, 848};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_DOUBLE_EQ(LineGeometry::anchor(i, 5, 1000).x, fiveCards[i]);
    }
    EXPECT_DOUBLE_EQ(LineGeometry::anchor(0, 10, 1000).x, 100);
    EXPECT_DOUBLE_EQ(LineGeometry::anchor(9, 10, 1000).x, 900);
    EXPECT_DOUBLE_EQ(LineGeometry::anchor(3, 10, 150).x, 75); // no room at all: one place
    EXPECT_DOUBLE_EQ(LineGeometry::anchor(0, 1, 0).y, 209.5);
}

TEST(LineGeometry, ACardHangsFourteenPointsUnderItsAnchor) {
    EXPECT_EQ(LineGeometry::cardRect({144, 110}, {500, 180}), (Rect{428, 56, 144, 110}));
}

} // namespace
} // namespace rb
