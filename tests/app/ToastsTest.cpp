#include "app/Toasts.h"

#include "desktops/virtual/Desktop.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace rb {

namespace {

class ToastsTest : public testing::Test {
protected:
    VirtualPanel& show(const std::string& text, const std::string& symbol = "tshirt",
                       SystemColor tint = SystemColor::Green) {
        toasts_.RBShowToast(text, symbol, tint);
        EXPECT_FALSE(desktop_.panels().visible().empty());
        return *desktop_.panels().visible().back();
    }
    std::size_t shown() { return desktop_.panels().visible().size(); }

    VirtualDesktop desktop_;
    Toasts toasts_{desktop_.services()};
};

TEST_F(ToastsTest, AppearsUnderTheMenuBarInTheMiddleOfTheScreen) {
    const VirtualPanel& panel = show("好");
    EXPECT_EQ(panel.frame(), (Rect{645, 900 - 24 - 38 - 6, 150, 38})) << "a short one is 150 wide";
    const PanelSpec& spec = panel.spec();
    EXPECT_EQ(spec.level, 25);
    EXPECT_EQ(spec.collectionBehavior, 0x151U);
    EXPECT_TRUE(spec.hasShadow);
    EXPECT_TRUE(spec.ignoresMouseEvents);
    EXPECT_FALSE(desktop_.application().isActive()) << "it takes nobody's focus";
}

TEST_F(ToastsTest, GrowsWithItsText) {
    // 8 characters of 13 points, a symbol of 18.75, 8 between them, 40 around.
    const VirtualPanel& panel = show("剪贴板记录已暂停");
    EXPECT_EQ(panel.frame().width, 104 + 18.75 + 8 + 40);
    EXPECT_EQ(panel.frame().x, std::round(720 - panel.frame().width / 2));
    EXPECT_EQ(panel.frame().x, std::floor(panel.frame().x));
    const VirtualPanel& textOnly = show("剪贴板记录已暂停，请稍后再试", "");
    EXPECT_EQ(textOnly.frame().width, 14 * 13 + 40) << "no gap for a missing symbol";
}

TEST_F(ToastsTest, ShowsOnTheScreenWithThePointer) {
    const Screen first{.id = 1, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 0, 1440, 863}}; // a tall menu bar
    const Screen second{.id = 2, .frame = {1440, 100, 1000, 800}, .visibleFrame = {1440, 100, 1000, 800}};
    desktop_.screens().set({first, second});
    desktop_.statusBar().setThickness(28);

    desktop_.pointer().moveTo({1500, 500});
    EXPECT_EQ(show("二").frame(), (Rect{1940 - 75, 900 - 28 - 38 - 6, 150, 38})) << "its menu bar is hidden";
    desktop_.pointer().moveTo({20, 900}); // the topmost row of pixels
    EXPECT_EQ(show("一").frame(), (Rect{645, 900 - 37 - 38 - 6, 150, 38}));
    desktop_.pointer().moveTo({2000, 50}); // beside both
    EXPECT_EQ(show("外").frame().x, 645) << "the first screen then";
    EXPECT_EQ(shown(), 3U) << "notices may overlap";

    desktop_.screens().set({});
    toasts_.RBShowToast("无", "tshirt", SystemColor::Blue);
    EXPECT_EQ(shown(), 3U) << "no screen, no notice";
}

TEST_F(ToastsTest, LooksLikeADarkPillWithATintedSymbolBesideItsText) {
    VirtualPanel& panel = show("晾衣绳已清空", "tshirt", SystemColor::Orange);
    const Layer& root = *panel.rootLayer();
    EXPECT_EQ(root.model().backgroundColor, Color::white(0.06, 0.94));
    EXPECT_EQ(root.model().cornerRadius, 19);
    EXPECT_EQ(root.model().borderWidth, 1);
    EXPECT_EQ(root.model().borderColor, Color::white(1, 0.1));
    ASSERT_EQ(root.sublayers().size(), 2U);
    const LayerModel& image = root.sublayers()[0]->model();
    const LayerModel& label = root.sublayers()[1]->model();
    EXPECT_EQ(image.contents, Image(Symbol{.name = "tshirt",
                                           .pointSize = 15,
                                           .weight = FontWeight::Semibold,
                                           .tint = desktop_.appearance().color(SystemColor::Orange)}));
    const auto& text = std::get<TextContent>(label.content);
    EXPECT_EQ(text.text, "晾衣绳已清空");
    EXPECT_EQ(text.font, (Font{.size = 13, .weight = FontWeight::Semibold}));
    EXPECT_EQ(label.frame().minX() - image.frame().maxX(), 8);
    EXPECT_NEAR(image.frame().minX(), panel.frame().width - label.frame().maxX(), 1e-9) << "centred together";
    EXPECT_NEAR(image.frame().midY(), 19, 0.5);
    EXPECT_NEAR(label.frame().midY(), 19, 0.5);
    EXPECT_EQ(label.contentsScale, 2) << "sharp on this screen";
}

TEST_F(ToastsTest, AnUnknownSymbolLeavesTheTextAlone) {
    desktop_.textMeter().removeSymbol("no.such.symbol");
    VirtualPanel& panel = show("只有文字", "no.such.symbol");
    ASSERT_EQ(panel.rootLayer()->sublayers().size(), 1U);
    EXPECT_NEAR(panel.rootLayer()->sublayers()[0]->model().frame().midX(), panel.frame().width / 2, 1e-9);
}

TEST_F(ToastsTest, DropsInOnASpringWhileItFadesIn) {
    VirtualPanel& panel = show("好");
    const Layer& root = *panel.rootLayer();
    EXPECT_TRUE(root.hasAnimation("rb.drop"));
    EXPECT_TRUE(root.hasAnimation("rb.fade"));
    EXPECT_EQ(root.presentation().transform.translation, (Point{0, 34.2}));
    EXPECT_EQ(root.presentation().opacity, 0);
    desktop_.advance(0.09);
    EXPECT_NEAR(root.presentation().opacity, 0.5, 1e-9);
    // The swing of mass 1, stiffness 220, damping 17 from rest.
    const double decay = 8.5;
    const double frequency = std::sqrt(220 - decay * decay);
    const double expected =
        34.2 * std::exp(-decay * 0.09) * (std::cos(frequency * 0.09) + decay / frequency * std::sin(frequency * 0.09));
    EXPECT_NEAR(root.presentation().transform.translation.y, expected, 1e-6);
    desktop_.advance(1.3);
    EXPECT_EQ(root.presentation().transform, LayerTransform{}) << "at rest";
    EXPECT_EQ(root.presentation().opacity, 1);
    EXPECT_TRUE(root.animationKeys().empty());
}

TEST_F(ToastsTest, LeavesAfterOneAndAHalfSeconds) {
    VirtualPanel& panel = show("好");
    const auto root = panel.rootLayer();
    desktop_.advance(1.499);
    EXPECT_FALSE(root->hasAnimation("rb.retract"));
    desktop_.advance(0.001 + 0.11);
    ASSERT_TRUE(root->hasAnimation("rb.retract"));
    const double easeIn = 0.31535681; // cubic Bézier (0.42, 0) (1, 1) half-way
    EXPECT_NEAR(root->presentation().opacity, 1 - easeIn, 1e-5);
    EXPECT_NEAR(root->presentation().transform.translation.y, 26.6 * easeIn, 1e-4);
    desktop_.advance(0.109);
    EXPECT_EQ(shown(), 1U);
    desktop_.advance(0.001);
    EXPECT_EQ(shown(), 0U);
    EXPECT_EQ(root->presentation(desktop_.runLoop().now()).opacity, 0) << "it never flashes up again";
    EXPECT_TRUE(desktop_.runLoop().pendingTimers().empty());
    desktop_.advance(0);
    EXPECT_EQ(root.use_count(), 1) << "nothing keeps a notice that is gone";
}

TEST_F(ToastsTest, NoticesComeAndGoIndependently) {
    show("一");
    desktop_.advance(1);
    show("二");
    desktop_.advance(0.72);
    EXPECT_EQ(shown(), 1U);
    desktop_.advance(1);
    EXPECT_EQ(shown(), 0U);
}

TEST_F(ToastsTest, TheOwnerMayGoAtAnyMoment) {
    for (const double moment : {0.0, 0.1, 1.5, 1.6, 1.72}) {
        Toasts owner(desktop_.services());
        owner.RBShowToast("好", "tshirt", SystemColor::Green);
        desktop_.advance(moment);
    }
    desktop_.advance(5);
    EXPECT_EQ(shown(), 0U);
}

} // namespace

} // namespace rb
