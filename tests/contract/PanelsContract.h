#pragma once

#include "platform/Panels.h"
#include "tests/contract/DesktopUnderTest.h"

namespace rb {

class PanelsContract : public ContractTest {
protected:
    static constexpr Rect frame{40, 60, 200, 38};
    std::unique_ptr<Panel> createPanel() {
        return desktop().panels.createPanel({.frame = frame, .level = StatusWindowLevel});
    }
};

TEST_P(PanelsContract, FrameAndVisibilityAreAsSet) {
    const auto panel = createPanel();
    EXPECT_FALSE(panel->isVisible()) << "created off the screen";
    EXPECT_EQ(panel->frame(), frame);
    panel->orderFrontRegardless();
    EXPECT_TRUE(panel->isVisible());
    const Rect moved{10, 100, 300, 210};
    panel->setFrame(moved);
    user().live(0.05);
    EXPECT_EQ(panel->frame(), moved);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_GT(panel->backingScaleFactor(), 0);
    panel->orderOut();
    panel->orderOut(); // twice is once
    EXPECT_FALSE(panel->isVisible());
    panel->orderFrontRegardless();
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->frame(), moved);
}

TEST_P(PanelsContract, TheRootLayerFillsThePanel) {
    const auto panel = createPanel();
    EXPECT_EQ(panel->rootLayer()->model().bounds, (Rect{0, 0, frame.width, frame.height}));
    EXPECT_EQ(panel->rootLayer()->model().frame(), (Rect{0, 0, frame.width, frame.height}));
    panel->orderFrontRegardless();
    panel->setFrame({40, 60, 300, 50});
    EXPECT_EQ(panel->rootLayer()->model().bounds, (Rect{0, 0, 300, 50}));
}

TEST_P(PanelsContract, AnimationsRunOnlyOnTheScreenAndEndInTime) {
    const auto panel = createPanel();
    const auto layer = Layer::create();
    panel->rootLayer()->addSublayer(layer);
    std::optional<bool> finished;
    Animation fade = Animation::basic(KeyPath::Opacity, 0.0, 1.0, 0.05);
    fade.completion = [&](bool ended) { finished = ended; };
    layer->addAnimation("rb.fade", std::move(fade));
    user().live(0.1);
    EXPECT_EQ(finished, std::nullopt) << "not shown yet";
    const double shown = loop().now();
    panel->orderFrontRegardless();
    ASSERT_TRUE(user().until([&] { return finished.has_value(); }));
    EXPECT_TRUE(*finished);
    EXPECT_GE(loop().now() - shown, 0.05 - 1e-6);
    EXPECT_FALSE(layer->hasAnimation("rb.fade"));
}

TEST_P(PanelsContract, ACompletionMayTakeItsPanelAway) {
    auto panel = createPanel();
    panel->orderFrontRegardless();
    Animation fade = Animation::basic(KeyPath::Opacity, 1.0, 0.0, 0.02);
    fade.completion = [&](bool) { panel.reset(); };
    const auto root = panel->rootLayer();
    root->addAnimation("rb.retract", std::move(fade));
    EXPECT_TRUE(user().until([&] { return panel == nullptr; }));
    EXPECT_EQ(root->host(), nullptr);
}

} // namespace rb
