#include "tests/clothesline/LineFixture.h"

#include <algorithm>

namespace rb {
namespace {

constexpr Point inBand{700, 980};
constexpr Point inLine{700, 800};
constexpr Point farAway{700, 300};

// Every rule holds on a system where the poll can rest and on one where it can't.
class LineReveal : public LineTest, public testing::WithParamInterface<bool> {
protected:
    LineReveal() {
        desktop.eventMonitors().setTellsInput(GetParam());
        line->start();
        desktop.advance(3);
    }
    VirtualPanel& panel() { return *desktop.panels().visible().front(); }
};

TEST_P(LineReveal, RestingInTheMenuBarDropsTheLine) {
    desktop.pointer().moveTo(inBand);
    desktop.advance(0.2);
    desktop.pointer().moveTo(farAway);
    desktop.advance(0.5);
    EXPECT_FALSE(line->revealed());

    desktop.pointer().moveTo(inBand);
    desktop.advance(0.32); // a quarter of a second after the tick that saw it first
    ASSERT_TRUE(line->revealed());
    EXPECT_EQ(panel().spec().level, 3);
    EXPECT_EQ(panel().spec().collectionBehavior, 0x151U);
    EXPECT_EQ(panel().frame(), (Rect{0, 734, 1512, 210}));
    desktop.advance(2);
    EXPECT_NEAR(slideOffset(), 0, 1e-9);
}

TEST_P(LineReveal, NothingDropsItThatSaysNo) {
    desktop.pointer().moveTo(inBand);
    desktop.pointer().setPressedButtons(1);
    desktop.advance(1);
    EXPECT_FALSE(line->revealed()) << "a button is held";
    desktop.pointer().setPressedButtons(0);
    desktop.userDefaults().setObject("ClotheslineHoverReveal", false);
    desktop.advance(1);
    EXPECT_FALSE(line->revealed()) << "switched off";
    desktop.userDefaults().setObject("ClotheslineHoverReveal", true);
    desktop.screens().setFullScreenSpace(1);
    desktop.advance(1);
    EXPECT_FALSE(line->revealed()) << "over a full-screen program";
    desktop.screens().setFullScreenSpace(std::nullopt);
    desktop.advance(1);
    EXPECT_TRUE(line->revealed());
}

TEST_P(LineReveal, AClickInTheMenuBarClosesItUntilThePointerHasLeftTheBar) {
    desktop.pointer().moveTo(inBand);
    desktop.advance(0.5);
    ASSERT_TRUE(line->revealed());
    desktop.eventMonitors().happenElsewhere(LeftMouseDownMask);
    EXPECT_FALSE(line->revealed());
    desktop.advance(3);
    EXPECT_FALSE(line->revealed());
    desktop.pointer().moveTo(inLine);
    desktop.advance(0.1);
    desktop.pointer().moveTo(inBand);
    desktop.advance(0.5);
    EXPECT_TRUE(line->revealed());
    // A click elsewhere is none of the line's business.
    desktop.pointer().moveTo(farAway);
    desktop.eventMonitors().happenHere(RightMouseDownMask);
    EXPECT_TRUE(line->revealed());
}

TEST_P(LineReveal, ItGoesAwayHalfASecondAfterThePointerLeft) {
    desktop.pointer().moveTo(inBand);
    desktop.advance(1);
    desktop.pointer().moveTo(farAway);
    desktop.advance(0.45);
    desktop.pointer().moveTo(inLine);
    desktop.advance(0.1);
    desktop.pointer().moveTo(farAway);
    desktop.advance(0.45);
    EXPECT_TRUE(line->revealed()) << "coming back starts the wait anew";
    desktop.advance(0.15);
    EXPECT_FALSE(line->revealed());
    desktop.advance(0.4);
    EXPECT_TRUE(desktop.panels().visible().empty());
}

TEST_P(LineReveal, PinnedItWaitsForAVisitAndPeekingItWaitsForItsTime) {
    reveal();
    desktop.advance(10);
    EXPECT_TRUE(line->revealed());
    desktop.pointer().moveTo(inLine);
    desktop.advance(0.1);
    desktop.pointer().moveTo(farAway);
    desktop.advance(0.6);
    EXPECT_FALSE(line->revealed());

    line->setPeekUntil(desktop.runLoop().now() + 2.5);
    line->setRevealed(true);
    desktop.advance(2.4);
    EXPECT_TRUE(line->revealed());
    desktop.advance(0.8);
    EXPECT_FALSE(line->revealed());
}

TEST_P(LineReveal, ARetractStartsFromWhereTheLineIsAndOnlyTheLastOneTakesItOff) {
    reveal();
    line->setRevealed(false);
    desktop.advance(0.1);
    const double halfway = slideOffset();
    EXPECT_GT(halfway, 1);
    EXPECT_LT(halfway, 221);
    line->setRevealed(true);
    desktop.advance(0);
    EXPECT_NEAR(slideOffset(), halfway, 1e-6);
    desktop.advance(0.05);
    line->setPinned(true);
    desktop.advance(0.5);
    EXPECT_EQ(desktop.panels().visible().size(), 1U) << "the first retract's end must not hide it";
}

TEST_P(LineReveal, ClicksGoThroughEverywhereButOnCards) {
    const auto hung = hang(1);
    reveal();
    EXPECT_TRUE(panel().spec().ignoresMouseEvents);
    const Rect card = hung[0]->peg.frame.offset(panel().frame().x, panel().frame().y);
    desktop.pointer().moveTo({card.midX(), card.midY()});
    desktop.advance(0.1);
    EXPECT_FALSE(panel().spec().ignoresMouseEvents);
    EXPECT_TRUE(hung[0]->hovered);
    desktop.pointer().moveTo({card.maxX() + 3, card.midY()});
    desktop.advance(0.1);
    EXPECT_TRUE(hung[0]->hovered) << "the margin counts";
    desktop.pointer().moveTo({card.maxX() + 5, card.midY()});
    desktop.advance(0.1);
    EXPECT_FALSE(hung[0]->hovered);
    EXPECT_TRUE(panel().spec().ignoresMouseEvents);
}

TEST_P(LineReveal, ItFollowsThePointersScreenWhenHiddenAndStaysWhenShown) {
    const Screen left{.id = 1, .frame = {0, 0, 1512, 982}, .visibleFrame = {0, 0, 1512, 944}};
    const Screen right{.id = 2, .frame = {1512, 0, 1000, 800}, .visibleFrame = {1512, 0, 1000, 800}};
    desktop.pointer().moveTo({2000, 795});
    desktop.screens().set({left, right});
    EXPECT_EQ(line->panelFrame(), (Rect{1512, 590, 1000, 210}));
    desktop.advance(0.5);
    ASSERT_TRUE(line->revealed()) << "a screen with a hidden menu bar has a band too";
    desktop.pointer().moveTo({2000, 700});
    desktop.advance(0.1);
    desktop.screens().set({left, {.id = 2, .frame = {1512, 0, 1200, 900}, .visibleFrame = {1512, 0, 1200, 870}}});
    EXPECT_EQ(line->panelFrame(), (Rect{1512, 660, 1200, 210}));
    desktop.screens().set({left});
    EXPECT_EQ(line->panelFrame(), (Rect{0, 734, 1512, 210}));
    desktop.screens().set({});
    EXPECT_EQ(line->panelFrame(), (Rect{0, 734, 1512, 210}));
}

TEST_P(LineReveal, AnEmptyLineSaysWhatItIsFor) {
    desktop.pointer().moveTo(inBand);
    desktop.advance(1);
    const auto slide = panel().rootLayer()->sublayers().back();
    const auto hint = slide->sublayers().back();
    EXPECT_DOUBLE_EQ(hint->presentation().opacity, 1);
    EXPECT_EQ(std::get<TextContent>(hint->sublayers().front()->model().content).text,
              "把文件、文件夹或图片拖到屏幕顶部");
    hang(1);
    desktop.advance(0.2);
    EXPECT_EQ(hint->superlayer(), nullptr);
}

TEST_P(LineReveal, NothingChangesWhileTheLineIsHidden) {
    const auto changes = desktop.layers().changes();
    desktop.advance(6);
    EXPECT_EQ(desktop.layers().changes(), changes);
}

INSTANTIATE_TEST_SUITE_P(Poll, LineReveal, testing::Bool(),
                         [](const auto& rests) { return rests.param ? "Rests" : "GoesOn"; });

class LinePoll : public LineTest {
protected:
    LinePoll() { line->start(); }
    // How often the poll looks, a second.
    double rate() {
        double fastest = 0;
        for (const auto& timer : desktop.runLoop().pendingTimers()) {
            fastest = std::max(fastest, 1 / timer.interval.value_or(1000));
        }
        return fastest;
    }
    bool rests() { return rate() < 1.5; }
};

TEST_F(LinePoll, RestsWhenThePointerIsStillAndWakesAtTheFirstInput) {
    desktop.advance(0.3);
    EXPECT_NEAR(rate(), 30, 1e-9);
    desktop.advance(0.5);
    EXPECT_TRUE(rests());
    desktop.pointer().moveTo({800, 400});
    EXPECT_NEAR(rate(), 30, 1e-9);
    desktop.advance(0.7);
    EXPECT_TRUE(rests());
    desktop.pointer().setPressedButtons(1);
    desktop.advance(5);
    EXPECT_NEAR(rate(), 30, 1e-9) << "a held button may become a drag";
    desktop.pointer().setPressedButtons(0);
    desktop.advance(1.1);
    EXPECT_TRUE(rests());
}

TEST_F(LinePoll, GoesOnWhileTheLineIsDownOrMayComeDown) {
    desktop.advance(2);
    line->hangFiles({"/nowhere"}); // not the user's hand
    EXPECT_NEAR(rate(), 30, 1e-9);
    desktop.advance(2.4);
    EXPECT_NEAR(rate(), 30, 1e-9);
    desktop.advance(2);
    EXPECT_FALSE(line->revealed());
    EXPECT_TRUE(rests());

    desktop.userDefaults().setObject("ClotheslineHoverReveal", false);
    desktop.pointer().moveTo(inBand);
    desktop.advance(2);
    EXPECT_NEAR(rate(), 30, 1e-9) << "whatever kept the line up may end without the user's hand";
    desktop.eventMonitors().happenElsewhere(LeftMouseDownMask);
    desktop.advance(2);
    EXPECT_TRUE(rests()) << "after a click only the pointer matters";
}

TEST_F(LinePoll, FindsAPointerThatAProgramMovedAndScreensThatChanged) {
    desktop.advance(2);
    desktop.pointer().warpTo(inBand);
    desktop.advance(1.4);
    EXPECT_TRUE(line->revealed());
    line->setRevealed(false);
    desktop.pointer().moveTo(farAway);
    desktop.advance(2);
    ASSERT_TRUE(rests());
    desktop.screens().set({{.id = 1, .frame = {0, 0, 1512, 310}, .visibleFrame = {0, 0, 1512, 280}}});
    desktop.advance(0.32);
    EXPECT_TRUE(line->revealed()) << "the menu bar came to the pointer";
}

} // namespace
} // namespace rb
