// What a layer looks like while it moves.

#include "tests/motion/TestHost.h"

#include <gtest/gtest.h>

#include <set>

namespace rb {
namespace {

class Presentation : public testing::Test {
protected:
    Presentation() { layer->setHost(&host); }
    ~Presentation() override { layer->setHost(nullptr); }
    LayerModel after(double seconds) const { return layer->presentation(host.time + seconds); }

    TestHost host;
    std::shared_ptr<Layer> layer = Layer::create();
};

PropertyAnimation part(KeyPath keyPath, LayerValue from, LayerValue to, bool additive = false) {
    return {.keyPath = keyPath, .from = from, .to = to, .additive = additive};
}

TEST_F(Presentation, MovesEveryKeyPathWithoutTouchingTheModel) {
    const LayerValue none[] = {0.0, Point{}, Size{}, Color::clear()};
    const LayerValue some[] = {8.0, Point{8, 4}, Size{8, 4}, Color{0.8, 0.4, 0.2, 1}};
    std::set<std::string_view> names;
    for (int i = 0; i <= static_cast<int>(KeyPath::LineWidth); ++i) {
        const auto keyPath = static_cast<KeyPath>(i);
        names.insert(keyPathName(keyPath));
        layer->change() = {};
        layer->change().content = ShapeContent{.strokeColor = Color{1, 1, 1, 1}};
        const LayerModel before = layer->model();
        const std::size_t kind = before.value(keyPath).index();
        layer->addAnimation("move", Animation::basic(keyPath, none[kind], some[kind], 2));
        EXPECT_EQ(after(1).value(keyPath), interpolate(none[kind], some[kind], 0.5)) << keyPathName(keyPath);
        EXPECT_EQ(layer->model().value(keyPath), before.value(keyPath)) << keyPathName(keyPath);
        EXPECT_EQ(after(2).value(keyPath), before.value(keyPath)) << keyPathName(keyPath);
        layer->removeAllAnimations();
    }
    EXPECT_EQ(names.size(), 16U);
    EXPECT_TRUE(names.contains("transform.rotation.z"));
}

TEST_F(Presentation, AddsAndReplacesInTheOrderOfAddition) {
    layer->change().transform.rotation = 1;
    // Keys sort the other way round than the animations were added.
    layer->addAnimation("z", {.parts = {part(KeyPath::RotationZ, 0.0, 0.2, true)}, .duration = 1});
    layer->addAnimation("y", {.parts = {part(KeyPath::RotationZ, 0.0, 0.4, true)}, .duration = 2});
    EXPECT_DOUBLE_EQ(after(0.5).transform.rotation, 1 + 0.1 + 0.1);
    EXPECT_DOUBLE_EQ(after(1.5).transform.rotation, 1 + 0.3);
    layer->addAnimation("x", {.parts = {part(KeyPath::RotationZ, 5.0, 7.0)}, .duration = 1});
    EXPECT_DOUBLE_EQ(after(0.5).transform.rotation, 6) << "what lies beneath is replaced";
    layer->addAnimation("a", {.parts = {part(KeyPath::RotationZ, 0.0, 0.2, true)}, .duration = 1});
    EXPECT_DOUBLE_EQ(after(0.5).transform.rotation, 6.1);
    // Adding under a key again puts it last.
    layer->addAnimation("z", {.parts = {part(KeyPath::RotationZ, 0.0, 0.0)}, .duration = 1});
    EXPECT_EQ(layer->animationKeys(), (std::vector<std::string>{"y", "x", "a", "z"}));
    EXPECT_DOUBLE_EQ(after(0.5).transform.rotation, 0);
}

TEST_F(Presentation, PacesAGroupAndItsPartsAndHoldsTheEnd) {
    Animation fall;
    fall.parts = {part(KeyPath::PositionY, 0.0, -520.0), part(KeyPath::Opacity, 1.0, 0.0)};
    fall.parts[1].pacing = TimingCurve::easeOut();
    fall.parts.push_back(part(KeyPath::TranslationY, 0.0, 10.0));
    const Spring spring{1, 220, 17, 0};
    fall.parts[2].pacing = spring;
    fall.duration = 0.5;
    fall.groupTiming = TimingCurve::easeIn();
    fall.holdsAtEnd = true;
    layer->addAnimation("rb.fall", fall);
    const double paced = TimingCurve::easeIn().at(0.4);
    EXPECT_NEAR(after(0.2).position.y, -520 * paced, 1e-9);
    EXPECT_NEAR(after(0.2).opacity, 1 - TimingCurve::easeOut().at(paced), 1e-9);
    EXPECT_NEAR(after(0.2).transform.translation.y, 10 * spring.at(0.5 * paced), 1e-9);
    for (const bool told : {false, true}) {
        EXPECT_DOUBLE_EQ(after(9).position.y, -520) << told;
        EXPECT_DOUBLE_EQ(after(9).transform.translation.y, 10) << told;
        layer->endDueAnimations(host.time + 9);
    }
    EXPECT_TRUE(layer->hasAnimation("rb.fall"));
    EXPECT_FALSE(layer->movesUntil(host.time)) << "held, not moving";
    layer->removeAnimation("rb.fall");
    EXPECT_DOUBLE_EQ(after(9).position.y, 0);
}

TEST_F(Presentation, PushesAndSwingsBackAtTheGivenTimes) {
    Animation push{.parts = {part(KeyPath::RotationZ, 0.0, -0.1, true)}, .duration = 0.3, .beginTime = host.time};
    Animation back{.parts = {part(KeyPath::RotationZ, -0.1, 0.0, true)}, .beginTime = host.time + 0.3};
    back.parts[0].pacing = Spring{1, 38, 2.4, 0};
    const double settled = Spring{1, 38, 2.4, 0}.settlingDuration();
    EXPECT_DOUBLE_EQ(back.resolvedDuration(), settled);
    layer->addAnimation("push", push);
    layer->addAnimation("back", back);
    EXPECT_DOUBLE_EQ(after(-0.1).transform.rotation, 0);
    EXPECT_NEAR(after(0.15).transform.rotation, -0.05, 1e-9);
    EXPECT_NEAR(after(0.3).transform.rotation, -0.1, 1e-9) << "one ends where the other begins";
    EXPECT_NEAR(after(0.3001).transform.rotation, -0.1, 1e-4);
    EXPECT_DOUBLE_EQ(*layer->nextEnd(host.time), host.time + 0.3);
    EXPECT_DOUBLE_EQ(*layer->movesUntil(host.time), host.time + 0.3 + settled);
    EXPECT_FALSE(layer->movesUntil(host.time + 0.3 + settled));
}

TEST_F(Presentation, AnimatesAValueFromWhereItVisiblyIs) {
    RBAnimateLayerValue(nullptr, KeyPath::Opacity, 0.0, 1);
    layer->change().shadowOpacity = 0.18;
    RBAnimateLayerValue(layer, KeyPath::ShadowOpacity, 0.26, 0.2);
    EXPECT_EQ(layer->model().shadowOpacity, 0.26);
    EXPECT_DOUBLE_EQ(layer->presentation().shadowOpacity, 0.18);
    host.time += 0.05;
    const double visible = layer->presentation().shadowOpacity;
    EXPECT_NEAR(visible, 0.18 + 0.08 * RBEaseOut.at(0.25), 1e-12);
    RBAnimateLayerValue(layer, KeyPath::ShadowOpacity, 0.18, 0.2);
    EXPECT_EQ(layer->animationKeys(), std::vector<std::string>{"rb.shadowOpacity"});
    EXPECT_DOUBLE_EQ(layer->presentation().shadowOpacity, visible) << "no jump";
    EXPECT_EQ(layer->model().shadowOpacity, 0.18);
}

} // namespace
} // namespace rb
