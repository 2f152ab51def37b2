#include "tests/displays/DisplaysFixture.h"

namespace rb {

namespace {

class ControllerTest : public DisplaysTest {};

TEST_F(ControllerTest, ShowingLooksAtEverything) {
    controller().show();
    EXPECT_TRUE(controller().busy());
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(desktop_.application().isActive());
    EXPECT_THAT(dump(window().content()), testing::HasSubstr("(检测中…)"));
    EXPECT_THAT(dump(window().content()), testing::HasSubstr("还没有检测到显示器"));
    desktop_.advance(0.5);
    EXPECT_FALSE(controller().busy());
    ASSERT_EQ(controller().rows().size(), 2U);
    EXPECT_EQ(passes(), 1);
    controller().show();
    desktop_.advance(0.5);
    EXPECT_EQ(passes(), 2);
    EXPECT_EQ(desktop_.windows().count(), 1U);
}

TEST_F(ControllerTest, ABurstOfChangesIsOnePassAfterTheLast) {
    opened();
    for (int device = 0; device < 5; ++device) {
        desktop_.hardware().changeUSB();
        desktop_.advance(0.3);
    }
    EXPECT_EQ(passes(), 1);
    desktop_.advance(1.19);
    EXPECT_EQ(passes(), 1) << "1.49 s after the last";
    desktop_.advance(0.01);
    EXPECT_EQ(passes(), 2);
    desktop_.advance(10);
    EXPECT_EQ(passes(), 2);
    EXPECT_FALSE(controller().refreshPending());
}

TEST_F(ControllerTest, EveryKindOfChangeCounts) {
    opened();
    const std::vector<std::function<void()>> changes{
        [this] { desktop_.hardware().wake(); }, [this] { desktop_.hardware().changeUSB(); },
        [this] { desktop_.screens().set(desktop_.screens().all()); }, [this] { desktop_.displays().notify(); }};
    long expected = 1;
    for (const auto& change : changes) {
        change();
        desktop_.advance(3);
        EXPECT_EQ(passes(), ++expected);
    }
    window().close();
    desktop_.hardware().wake();
    desktop_.advance(3);
    EXPECT_EQ(passes(), ++expected) << "the rows follow while the window is closed";
    EXPECT_FALSE(window().isVisible()) << "but it stays closed";
}

TEST_F(ControllerTest, WithoutAWindowNothingIsAsked) {
    controller();
    desktop_.hardware().wake();
    desktop_.advance(10);
    EXPECT_EQ(passes(), 0);
    EXPECT_TRUE(desktop_.runLoop().pendingTimers().empty());
}

TEST_F(ControllerTest, AChangeInTheMiddleDropsThePassAndBeginsAnother) {
    answers_.erase("list"); // hangs until it is killed
    controller().show();
    desktop_.advance(1);
    setDisplays({external()});
    snapshot_ = R"({"ports":[{"name":"neu"}]})";
    desktop_.advance(1.5);
    EXPECT_EQ(passes(), 1) << "the timer found a pass under way";
    EXPECT_TRUE(controller().refreshPending());
    answers_["list"] = "[]";
    desktop_.advance(2.5); // 5 s are over
    EXPECT_TRUE(controller().rows().empty()) << "the old pass's rows are out of date";
    EXPECT_TRUE(controller().connections().ports.empty());
    EXPECT_FALSE(controller().busy());
    desktop_.advance(1.4);
    EXPECT_EQ(passes(), 1);
    desktop_.advance(0.6);
    EXPECT_EQ(passes(), 2);
    ASSERT_EQ(controller().rows().size(), 1U);
    EXPECT_EQ(controller().connections().ports.at(0).name, "neu");
    desktop_.advance(10);
    EXPECT_EQ(passes(), 2);
}

TEST_F(ControllerTest, PressingRefreshTakesAWaitingRefreshOver) {
    opened();
    desktop_.hardware().changeUSB();
    desktop_.advance(1);
    window().clickButton("刷新");
    desktop_.advance(10);
    EXPECT_EQ(passes(), 2);
}

TEST_F(ControllerTest, GoingInTheMiddleOfAPassLeavesNothing) {
    answers_.erase("probe");
    controller().show();
    desktop_.advance(1);
    desktop_.hardware().wake();
    controller_.reset();
    desktop_.advance(20);
    EXPECT_TRUE(desktop_.runLoop().pendingTimers().empty());
    EXPECT_TRUE(desktop_.childProcesses().children().back()->wasKilled());
    EXPECT_EQ(desktop_.windows().count(), 0U);
}

TEST_F(ControllerTest, ScreensAreIdentifiedByLabels) {
    opened();
    controller().identify(1);
    desktop_.advance(0.2);
    controller().identify(0);
    controller().identify(5);
    ASSERT_EQ(desktop_.panels().visible().size(), 2U);
    EXPECT_EQ(desktop_.panels().visible()[0]->frame(), (Rect{1440 + 720 - 170, 450 - 70, 340, 140}));
    EXPECT_EQ(desktop_.panels().visible()[1]->frame(), (Rect{720 - 170, 450 - 70, 340, 140}));
    desktop_.advance(1.9);
    EXPECT_EQ(desktop_.panels().visible().size(), 2U) << "on its way out";
    desktop_.advance(0.16);
    EXPECT_EQ(desktop_.panels().visible().size(), 1U) << "2.0 s and 0.25 s after it came";
    desktop_.advance(1);
    EXPECT_TRUE(desktop_.panels().visible().empty());
    desktop_.screens().set({});
    controller().identify(0);
    EXPECT_TRUE(desktop_.panels().visible().empty()) << "no such screen";
}

} // namespace

} // namespace rb
