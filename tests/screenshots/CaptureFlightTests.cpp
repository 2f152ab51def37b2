#include "tests/screenshots/CaptureFixture.h"

#include "clothesline/LineGeometry.h"
#include "screenshots/CaptureFlight.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace rb {

namespace {

class FlightTest : public CaptureTest {
protected:
    FlightTest() { start(); }

    const std::string shot = picturesFolder + "/shot.png";
    // Advances to the moment at which the file is reported.
    void report() { desktop.advance(0.2501); }
    // The panels in the air: all but the line.
    std::vector<VirtualPanel*> flights() {
        std::vector<VirtualPanel*> found;
        for (auto* panel : desktop.panels().visible()) {
            if (panel->frame().height > 210) {
                found.push_back(panel);
            }
        }
        return found;
    }
    Layer& container() { return *flights().front()->rootLayer()->sublayers().front(); }
    Layer& part(std::size_t index) { return *container().sublayers().at(index); }
};

TEST_F(FlightTest, ACaptureComesOutOfItsPlaceAndLandsOnItsCard) {
    captureFrom(shot, 100, 200, 400, 300);
    report();
    ASSERT_EQ(line->items().size(), 1u);
    EXPECT_TRUE(line->revealed());
    const RBPegItemRef item = line->items().front();
    EXPECT_TRUE(item->flying);
    EXPECT_EQ(item->swing->model().opacity, 0);
    EXPECT_TRUE(flights().empty());
    desktop.advance(0.03);
    ASSERT_EQ(flights().size(), 1u);
    EXPECT_EQ(flights().front()->frame(), (Rect{0, 0, 1512, 982}));
    // The first frame is the capture itself: 982 - 200 is the top.
    EXPECT_EQ(container().model().bounds, (Rect{0, 0, 400, 300}));
    EXPECT_EQ(container().model().position, (Point{300, 782}));
    EXPECT_EQ(container().model().transform.rotation, 0);
    EXPECT_EQ(part(1).model().cornerRadius, 0);
    EXPECT_EQ(part(1).model().frame(), (Rect{0, 0, 400, 300}));
    for (const std::size_t hidden : {0u, 2u, 3u}) {
        EXPECT_EQ(part(hidden).model().opacity, 0) << hidden;
    }
    desktop.advance(0.64);
    EXPECT_TRUE(item->flying);
    desktop.advance(0.02);
    EXPECT_FALSE(item->flying);
    // The last one is the card.
    const Rect card = LineGeometry::cardRect(item->cardSize, item->swing->model().position)
                          .offset(line->panelFrame().x, line->panelFrame().y);
    EXPECT_NEAR(container().model().bounds.width, card.width, 1e-9);
    EXPECT_NEAR(container().model().position.x, card.midX(), 1e-9);
    EXPECT_NEAR(container().model().position.y, card.maxY(), 1e-9);
    EXPECT_NEAR(container().model().transform.rotation, -item->tilt * std::numbers::pi / 180, 1e-12);
    EXPECT_EQ(part(0).model().cornerRadius, 16);
    EXPECT_EQ(part(1).model().frame(), (Rect{4, 4, card.width - 8, card.height - 8}));
    EXPECT_EQ(part(1).model().cornerRadius, 12);
    for (const std::size_t shown : {0u, 2u, 3u}) {
        EXPECT_EQ(part(shown).model().opacity, 1) << shown;
    }
    EXPECT_EQ(item->swing->model().opacity, 1);
    EXPECT_LT(item->swing->presentation().opacity, 1) << "fading in";
    desktop.advance(0.2);
    EXPECT_TRUE(flights().empty());
    EXPECT_EQ(item->swing->presentation().opacity, 1);
}

TEST_F(FlightTest, TheMiddleOfThePathIsThirtyPointsAboveTheStraightLine) {
    Screen screen = desktop.screens().all().front();
    RBCaptureFlight flight(desktop.services(),
                           {.from = {0, 0, 400, 300}, .to = {800, 600, 100, 80}, .tilt = 2, .screen = screen}, [] {});
    bool gone = false;
    flight.run([&] { gone = true; });
    flight.update(0.5);
    const LayerModel& model = container().model();
    EXPECT_NEAR(model.bounds.width, 250, 1e-9);
    EXPECT_NEAR(model.bounds.height, 190, 1e-9);
    EXPECT_NEAR(model.position.x, (200 + 850) / 2.0, 1e-9);
    EXPECT_NEAR(model.position.y, (300 + 680) / 2.0 + 30, 1e-9);
    EXPECT_EQ(part(1).model().cornerRadius, 6);
    const double x = 0.15 / 0.65;
    EXPECT_NEAR(part(0).model().opacity, x * x * (3 - 2 * x), 1e-9);
    EXPECT_EQ(part(3).model().frame(), (Rect{120.5, 178, 9, 26}));
    flight.update(0.25); // eased 0.0625: the card's own parts wait
    EXPECT_EQ(part(0).model().opacity, 0);
    EXPECT_NEAR(container().model().bounds.width, 400 - 300 * 0.0625, 1e-9);
    desktop.advance(1);
    EXPECT_TRUE(gone);
}

TEST_F(FlightTest, DrawsEveryFrameAndNothingAfterwards) {
    captureFrom(shot, 100, 200, 400, 300);
    report();
    desktop.advance(0.031);
    int frames = 0;
    Point last = container().model().position;
    for (int i = 0; i < 78; ++i) {
        desktop.advance(1.0 / 120);
        const Point now = container().model().position;
        frames += now != last ? 1 : 0;
        last = now;
    }
    EXPECT_GE(frames, 76);
    desktop.advance(1);
    for (const auto& timer : desktop.runLoop().pendingTimers()) {
        EXPECT_NE(timer.interval, 1.0 / 120);
    }
}

TEST_F(FlightTest, ARectangleThatIsNoneMeansNoFlight) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const std::vector<PropertyValue> wrong = {PropertyArray{0, 0, 2, 100},    PropertyArray{0, 0, 100, 2.0},
                                              PropertyArray{0, 0, -5, 100},   PropertyArray{0, 0, 100},
                                              PropertyArray{0, 0, 9, 9, 9},   PropertyArray{},
                                              PropertyArray{0, 0, "9", 9},    PropertyArray{nan, 0, 9, 9},
                                              PropertyArray{0, 0, nan, 9},    PropertyArray{0, 0, inf, 9},
                                              PropertyArray{-inf, 0, 9, 9},   PropertyArray{0, 1e300, 9, 9},
                                              PropertyArray{0, 0, 9e18, 9},   PropertyArray{0, 0, PropertyArray{9}, 9},
                                              PropertyDictionary{},           "0 0 9 9",
                                              PropertyValue(std::int64_t{42})};
    int number = 0;
    for (const PropertyValue& rectangle : wrong) {
        const std::string path = picturesFolder + "/" + std::to_string(number++) + ".png";
        desktop.captureFacts().setRectangle(path, rectangle);
        capture(path);
        report();
        const RBPegItemRef item = line->itemForPath(path);
        ASSERT_TRUE(item) << path;
        EXPECT_FALSE(item->flying) << path;
        desktop.advance(0.1);
        EXPECT_TRUE(flights().empty()) << path;
        line->removeItem(item, {.quietly = true});
    }
    captureFrom(picturesFolder + "/thin.png", 0, 0, 2.1, 100);
    report();
    EXPECT_TRUE(line->itemForPath(picturesFolder + "/thin.png")->flying);
}

TEST_F(FlightTest, AtMostTwoFlyAtOnceAndTheThirdIsThereAtOnce) {
    for (const char* name : {"/a.png", "/b.png", "/c.png"}) {
        captureFrom(picturesFolder + name, 100, 200, 400, 300);
    }
    report();
    desktop.advance(0.031);
    EXPECT_EQ(flights().size(), 2u);
    EXPECT_TRUE(line->items()[0]->flying);
    EXPECT_TRUE(line->items()[1]->flying);
    EXPECT_FALSE(line->items()[2]->flying);
    desktop.advance(0.66);
    EXPECT_FALSE(line->items()[0]->flying);
    // While the first two fade, two more may fly.
    captureFrom(picturesFolder + "/d.png", 100, 200, 400, 300);
    report();
    desktop.advance(0.031);
    EXPECT_TRUE(line->itemForPath(picturesFolder + "/d.png")->flying);
    desktop.advance(2);
    EXPECT_TRUE(flights().empty());
}

TEST_F(FlightTest, NoCardStaysInvisible) {
    // The picture can't be decoded.
    desktop.captureFacts().setRectangle(shot, PropertyArray{0, 0, 400, 300});
    capture(shot, {});
    report();
    desktop.advance(0.031);
    EXPECT_FALSE(line->items().front()->flying);
    // The line goes before the flight begins.
    captureFrom(picturesFolder + "/b.png", 100, 200, 400, 300);
    report();
    line->setRevealed(false);
    desktop.advance(0.031);
    EXPECT_FALSE(line->itemForPath(picturesFolder + "/b.png")->flying);
    // The card goes before the flight begins.
    captureFrom(picturesFolder + "/c.png", 100, 200, 400, 300);
    report();
    const RBPegItemRef gone = line->itemForPath(picturesFolder + "/c.png");
    line->removeItem(gone, {.quietly = true});
    desktop.advance(0.031);
    EXPECT_FALSE(gone->flying);
    EXPECT_TRUE(flights().empty());
    // The screen goes in mid-flight.
    captureFrom(picturesFolder + "/d.png", 100, 200, 400, 300);
    report();
    desktop.advance(0.3);
    desktop.screens().set({{.id = 9, .frame = {0, 0, 800, 600}, .visibleFrame = {0, 0, 800, 570}}});
    desktop.advance(2);
    EXPECT_FALSE(line->itemForPath(picturesFolder + "/d.png")->flying);
    EXPECT_TRUE(flights().empty());
}

TEST_F(FlightTest, TheLineGoesToTheScreenOfTheCapture) {
    const Screen left{.id = 1, .frame = {0, 0, 1512, 982}, .visibleFrame = {0, 0, 1512, 944}};
    const Screen right{.id = 2, .frame = {1512, 182, 1000, 800}, .visibleFrame = {1512, 182, 1000, 776}};
    desktop.screens().set({left, right});
    captureFrom(picturesFolder + "/a.png", 1600, 10, 200, 200);
    report();
    EXPECT_EQ(line->panelScreen()->id, 2u);
    desktop.advance(0.031);
    EXPECT_EQ(flights().front()->frame(), right.frame);
    EXPECT_EQ(container().model().position, (Point{1700 - 1512, 972 - 182}));
    // A revealed line stays when nobody knows where the capture was taken, and moves when somebody does.
    capture(picturesFolder + "/b.png");
    report();
    EXPECT_EQ(line->panelScreen()->id, 2u);
    captureFrom(picturesFolder + "/c.png", 10, 10, 200, 200);
    report();
    EXPECT_EQ(line->panelScreen()->id, 1u);
    desktop.advance(3);
}

TEST_F(FlightTest, TheLineStaysForTwoAndAHalfSeconds) {
    captureFrom(shot, 100, 200, 400, 300);
    report();
    desktop.advance(2.45);
    EXPECT_TRUE(line->revealed());
    desktop.advance(2);
    EXPECT_FALSE(line->revealed());
}

} // namespace

} // namespace rb
