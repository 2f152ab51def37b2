#include "desktops/virtual/ViewLayout.h"

#include "desktops/virtual/TextMeter.h"

#include <gtest/gtest.h>

namespace rb {

namespace {

class ViewLayoutTest : public testing::Test {
protected:
    static View block(double width, double height) { return {.content = ImageView{.size = {width, height}}}; }
    Rect frameAt(const View& root, const ViewPath& path, Size area = {200, 100}) {
        for (const PlacedView& placed : layOut(root, area, meter_)) {
            if (placed.path == path) {
                return placed.frame;
            }
        }
        ADD_FAILURE() << "nothing placed there";
        return {};
    }
    VirtualTextMeter meter_;
};

TEST_F(ViewLayoutTest, VerticalStacksRunFromTheTopAndSpacersTakeTheRest) {
    StackView stack{.spacing = 5, .insets = {.top = 10, .left = 20, .bottom = 8, .right = 30}};
    View first = block(50, 10);
    first.spacingAfter = 2;
    stack.children = {first, block(60, 12), {.content = SpacerView{}}, block(70, 6)};
    View root{.content = stack};
    EXPECT_EQ(frameAt(root, {0}), (Rect{20, 80, 50, 10}));
    EXPECT_EQ(frameAt(root, {1}), (Rect{20, 66, 60, 12}));
    EXPECT_EQ(frameAt(root, {3}), (Rect{20, 8, 70, 6}));
    EXPECT_EQ(fittingSize(root, 200, meter_), (Size{120, 10 + 10 + 2 + 12 + 5 + 0 + 5 + 6 + 8}));

    std::get<StackView>(root.content).alignment = StackAlignment::Fill;
    EXPECT_EQ(frameAt(root, {1}), (Rect{20, 66, 150, 12}));
    std::get<StackView>(root.content).alignment = StackAlignment::Center;
    EXPECT_EQ(frameAt(root, {1}), (Rect{65, 66, 60, 12}));
}

TEST_F(ViewLayoutTest, HorizontalStacksRunFromTheLeft) {
    StackView stack{.orientation = Orientation::Horizontal, .alignment = StackAlignment::Center, .spacing = 10};
    stack.children = {block(50, 10), {.content = SpacerView{}}, block(30, 40)};
    const View root{.content = stack};
    EXPECT_EQ(frameAt(root, {0}), (Rect{0, 45, 50, 10}));
    EXPECT_EQ(frameAt(root, {2}), (Rect{170, 30, 30, 40}));
}

TEST_F(ViewLayoutTest, TextsWrapIntoTheWidthTheyGet) {
    const LabelView label{.text = std::string(30, 'x'), .font = {.size = 10}, .wraps = true}; // 150 wide on one line
    EXPECT_EQ(fittingSize({.content = label}, 200, meter_), (Size{150, 12.5}));
    EXPECT_EQ(fittingSize({.content = label}, 60, meter_), (Size{60, 3 * 12.5}));
}

TEST_F(ViewLayoutTest, BoxesCentreOrFillWithTheirChild) {
    BoxView box{.insets = {.top = 10, .left = 12, .bottom = 0, .right = 12}};
    box.child.push_back(block(40, 20));
    EXPECT_EQ(frameAt({.content = box}, {0}), (Rect{12, 0, 176, 90}));
    box.placement = BoxContentPlacement::Center;
    EXPECT_EQ(frameAt({.content = box}, {0}), (Rect{80, 35, 40, 20}));
    box.child.front().width = 500;
    EXPECT_EQ(frameAt({.content = box}, {0}).width, 176) << "no wider than the area";
}

} // namespace

} // namespace rb
