#include "helpers/capture/Region.h"
#include "helpers/capture/CaptureDisplays.h"
#include "helpers/capture/WindowPlaces.h"

#include <gtest/gtest.h>

#include <random>

// Geometry of the chooser, in pixels.
namespace rb {

namespace {

constexpr PixelRect screen{0, 0, 1000, 600};

TEST(RegionDragTest, DrawsInEveryDirectionAndReachesEveryEdge) {
    RegionDrag drag(screen);
    EXPECT_EQ(drag.selection(), PixelRect{});
    drag.press({400, 300});
    drag.move({100, 500});
    EXPECT_EQ(drag.selection(), (PixelRect{100, 300, 301, 201}));
    drag.move({5000, -7});
    EXPECT_EQ(drag.release(), (PixelRect{400, 0, 600, 301})) << "a pointer beyond the screen stays in it";
    EXPECT_FALSE(drag.isDragging());
    drag.press({0, 0});
    drag.move({999, 599});
    EXPECT_EQ(drag.release(), screen) << "all of it";
    drag.press({10, 10});
    drag.move({12, 12});
    EXPECT_EQ(drag.release(), PixelRect{}) << "a click with an unsteady hand";
    drag.press({10, 10});
    drag.move({10, 30});
    EXPECT_EQ(drag.release(), (PixelRect{10, 10, 1, 21})) << "a line is a region";
}

TEST(RegionDragTest, MovesAsAWholeWhileHeld) {
    RegionDrag drag(screen);
    drag.press({100, 100});
    drag.move({299, 199});
    drag.hold(true);
    EXPECT_TRUE(drag.isMoving());
    drag.move({349, 259});
    EXPECT_EQ(drag.selection(), (PixelRect{150, 160, 200, 100}));
    drag.hold(false); // keys repeat themselves
    drag.hold(true);
    EXPECT_EQ(drag.selection(), (PixelRect{150, 160, 200, 100}));
    drag.move({990, 590});
    EXPECT_EQ(drag.selection(), (PixelRect{791, 491, 200, 100}));
    drag.move({999, 599});
    EXPECT_EQ(drag.selection(), (PixelRect{800, 500, 200, 100})) << "it stops at the edges";
    drag.hold(false);
    drag.move({899, 549});
    EXPECT_EQ(drag.release(), (PixelRect{800, 500, 100, 50})) << "and goes on from where it is";
}

// Whatever a hand does, the region is inside the screen and keeps its size while it is held.
TEST(RegionDragTest, StaysInsideTheScreen) {
    std::mt19937 random(11);
    const auto place = [&] {
        return PixelPoint{static_cast<int>(random() % 1400) - 200, static_cast<int>(random() % 1000) - 200};
    };
    for (int round = 0; round < 2000; ++round) {
        RegionDrag drag(screen);
        drag.press(place());
        for (int step = 0; step < 6; ++step) {
            const PixelRect before = drag.selection();
            drag.move(place());
            const PixelRect now = drag.selection();
            ASSERT_EQ(intersection(now, screen), now);
            if (drag.isMoving()) {
                ASSERT_EQ(now.width, before.width);
                ASSERT_EQ(now.height, before.height);
            }
            drag.hold(random() % 2 == 0);
        }
    }
}

TEST(LabelPlaceTest, IsWholeOnTheScreenAndBesideTheRegionWhereItCan) {
    const auto place = [](const PixelRect& region) { return labelPlace(region, 100, 20, screen, 10); };
    EXPECT_EQ(place({300, 100, 200, 50}), (PixelRect{350, 160, 100, 20})) << "below the middle";
    EXPECT_EQ(place({300, 400, 200, 190}), (PixelRect{350, 370, 100, 20})) << "above";
    EXPECT_EQ(place(screen), (PixelRect{450, 570, 100, 20})) << "inside";
    EXPECT_EQ(place({0, 0, 4, 4}), (PixelRect{10, 14, 100, 20}));
    EXPECT_EQ(place({996, 596, 4, 4}), (PixelRect{890, 566, 100, 20}));
    const PixelRect second{1000, 0, 800, 600};
    EXPECT_EQ(labelPlace({500, 100, 700, 100}, 100, 20, second, 10), (PixelRect{1010, 210, 100, 20}))
        << "on the screen where the mouse is";
}

TEST(CaptureDisplaysTest, PointsCountFromThePrimaryDisplay) {
    const std::vector<CaptureDisplay> displays = {
        {.name = "LEFT", .pixels = {0, 0, 3840, 2160}, .ratio = 2},
        {.name = "MAIN", .pixels = {3840, 200, 1920, 1080}, .ratio = 1, .primary = true},
        {.name = "ODD", .pixels = {5760, 0, 1500, 900}, .ratio = 1.5},
    };
    EXPECT_EQ(pointsOf({3940, 250, 300, 100}, displays), (Rect{100, 50, 300, 100}));
    EXPECT_EQ(pointsOf({400, 600, 200, 100}, displays), (Rect{-3640, 100, 100, 50})) << "pixels of a finer display";
    EXPECT_EQ(pointsOf({5910, 150, 300, 300}, displays), (Rect{2020, -100, 200, 200}));
    EXPECT_EQ(unionOf(displays), (PixelRect{0, 0, 7260, 2160}));
    EXPECT_EQ(displayAt(displays, {3839, 0}).name, "LEFT");
    EXPECT_EQ(displayAt(displays, {3840, 0}).name, "MAIN") << "above it there is nothing: the primary one";
    EXPECT_FALSE(belongsToWayland(displays));
    EXPECT_TRUE(belongsToWayland({{.name = "XWAYLAND0"}}));
}

TEST(WindowPlacesTest, TheTopmostThatTakesThePointer) {
    const auto window = [](xcb_window_t id, const PixelRect& area, std::vector<PixelRect> input) {
        return WindowPlace{.window = id, .client = id, .frame = area, .area = area, .input = std::move(input)};
    };
    const PixelRect low{100, 100, 400, 300};
    const std::vector<WindowPlace> windows = {
        window(1, {0, 0, 1000, 200}, {}), // lets everything through
        window(2, {300, 150, 400, 200}, {{300, 150, 400, 200}}),
        window(3, low, {low}),
    };
    EXPECT_EQ(windowAt(windows, {150, 150})->window, 3U);
    EXPECT_EQ(windowAt(windows, {310, 160})->window, 2U);
    EXPECT_EQ(windowAt(windows, {900, 50}), nullptr);
    EXPECT_TRUE(isCovered(windows, windows[2], screen));
    EXPECT_FALSE(isCovered(windows, windows[0], screen));
    EXPECT_TRUE(isCovered(windows, windows[1], {0, 0, 600, 600})) << "a part is beyond the screen";
}

} // namespace

} // namespace rb
