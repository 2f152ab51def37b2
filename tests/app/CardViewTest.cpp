#include "app/CardView.h"

#include "desktops/virtual/Desktop.h"

#include <gtest/gtest.h>

namespace rb {

namespace {

constexpr Color restingBackground = Color::white(1, 0.055);
constexpr Color restingBorder = Color::white(1, 0.09);
constexpr Color hoveredBackground = Color::white(1, 0.085);
constexpr Color hoveredBorder = Color::white(1, 0.2);

// One card with a margin of 50 points in a window in the middle of the screen.
class CardViewTest : public testing::Test {
protected:
    CardViewTest() {
        desktop_.pointer().moveTo(outside);
        View card = card_.view({.content = LabelView{.text = "内建显示屏"}}, {16, 16, 16, 16});
        card.identifier = "card";
        StackView page{.alignment = StackAlignment::Fill, .insets = {50, 50, 50, 50}};
        page.children = {std::move(card)};
        window_->setContent({.content = std::move(page)});
        desktop_.services().application.activateIgnoringOtherApps();
        window_->center();
        window_->makeKeyAndOrderFront();
        const auto& shown = desktop_.windows().titled("Cards");
        const Rect frame = shown.frameOf("card").offset(shown.contentFrame().x, shown.contentFrame().y);
        inside = {frame.midX(), frame.midY()};
    }
    LayerModel shown() { return card_.layer()->presentation(); }
    const LayerModel& model() { return card_.layer()->model(); }

    static constexpr Point outside{5, 5};
    Point inside;
    VirtualDesktop desktop_;
    RBCardView card_;
    std::unique_ptr<Window> window_ =
        desktop_.services().windows.createWindow({.contentSize = {600, 400}, .title = "Cards"});
};

TEST_F(CardViewTest, RestsQuietly) {
    EXPECT_FALSE(card_.hovered());
    EXPECT_EQ(model().cornerRadius, 20);
    EXPECT_EQ(model().borderWidth, 1);
    EXPECT_EQ(model().shadowColor, (Color{0, 0, 0, 1}));
    EXPECT_EQ(model().shadowRadius, 16);
    EXPECT_EQ(model().shadowOffset, (Size{0, -5}));
    EXPECT_EQ(model().backgroundColor, restingBackground);
    EXPECT_EQ(model().borderColor, restingBorder);
    EXPECT_EQ(model().shadowOpacity, 0);
    EXPECT_TRUE(card_.layer()->animationKeys().empty());
}

TEST_F(CardViewTest, BrightensUnderThePointerAndFallsBackWithAnimation) {
    desktop_.pointer().moveTo(inside);
    EXPECT_TRUE(card_.hovered());
    EXPECT_EQ(model().backgroundColor, hoveredBackground);
    EXPECT_EQ(model().borderColor, hoveredBorder);
    EXPECT_EQ(model().shadowOpacity, 0.3);
    EXPECT_EQ(shown().backgroundColor, restingBackground) << "it starts from where it is";
    desktop_.advance(0.05);
    // The shared ease-out is steep at first.
    EXPECT_GT(shown().shadowOpacity, 0.15);
    EXPECT_LT(shown().shadowOpacity, 0.3);
    desktop_.advance(0.15);
    EXPECT_FALSE(card_.layer()->hasAnimation("rb.backgroundColor")) << "colours take 0.2 s";
    EXPECT_FALSE(card_.layer()->hasAnimation("rb.borderColor"));
    EXPECT_TRUE(card_.layer()->hasAnimation("rb.shadowOpacity")) << "the shadow 0.25 s";
    desktop_.advance(0.05);
    EXPECT_TRUE(card_.layer()->animationKeys().empty());
    EXPECT_EQ(shown().backgroundColor, hoveredBackground);
    EXPECT_EQ(shown().shadowOpacity, 0.3);

    desktop_.pointer().moveTo(outside);
    EXPECT_FALSE(card_.hovered());
    EXPECT_EQ(shown().backgroundColor, hoveredBackground);
    EXPECT_TRUE(card_.layer()->hasAnimation("rb.backgroundColor"));
    desktop_.advance(0.25);
    EXPECT_EQ(shown().backgroundColor, restingBackground);
    EXPECT_EQ(shown().borderColor, restingBorder);
    EXPECT_EQ(shown().shadowOpacity, 0);
}

TEST_F(CardViewTest, ChangingItsMindStartsFromWhereItVisiblyIs) {
    desktop_.pointer().moveTo(inside);
    desktop_.advance(0.03);
    const double before = shown().shadowOpacity;
    desktop_.pointer().moveTo(outside);
    EXPECT_NEAR(shown().shadowOpacity, before, 1e-9);
    EXPECT_EQ(model().shadowOpacity, 0);
}

TEST_F(CardViewTest, ARedrawRestoresTheLookWithoutAnimation) {
    desktop_.pointer().moveTo(inside);
    desktop_.advance(1);
    card_.layer()->change().backgroundColor = Color{1, 0, 0, 1};
    card_.layer()->change().shadowOpacity = 1;
    desktop_.appearance().setDark(true);
    EXPECT_TRUE(card_.layer()->animationKeys().empty());
    EXPECT_EQ(shown().backgroundColor, hoveredBackground) << "still under the pointer";
    EXPECT_EQ(shown().shadowOpacity, 0.3);
    EXPECT_EQ(shown().borderColor, hoveredBorder);
}

} // namespace

} // namespace rb
