// The tree: hosts, superlayers, and who is told what.

#include "tests/motion/TestHost.h"

#include <gtest/gtest.h>

#include <utility>

namespace rb {
namespace {

TEST(Layer, FollowsTheHostOfItsTreeAndStartsWaitingAnimationsThen) {
    TestHost host;
    const auto root = Layer::create();
    const auto child = Layer::create();
    const auto mask = Layer::create();
    child->setMask(mask);
    mask->addAnimation("fade", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 1));
    EXPECT_FALSE(mask->movesUntil(0)) << "waits";
    EXPECT_DOUBLE_EQ(mask->presentation().opacity, 1) << "not shown: the model";

    root->setHost(&host);
    host.time = 200;
    root->addSublayer(child);
    EXPECT_EQ(mask->host(), &host);
    EXPECT_DOUBLE_EQ(*root->movesUntil(200), 201);
    host.time = 200.25;
    EXPECT_DOUBLE_EQ(mask->presentation().opacity, 0.25);

    // Off the screen the animation keeps its time.
    root->setHost(nullptr);
    EXPECT_EQ(mask->host(), nullptr);
    host.time = 200.5;
    root->setHost(&host);
    EXPECT_DOUBLE_EQ(mask->presentation().opacity, 0.5);

    root->setHost(nullptr);
}

TEST(Layer, TellsTheHostOfEveryChange) {
    TestHost host;
    const auto root = Layer::create();
    const auto child = Layer::create();
    root->setHost(&host);
    const auto changed = [&host] { return std::exchange(host.changed, nullptr); };
    EXPECT_EQ(changed(), root.get());
    child->change().opacity = 0.5;
    EXPECT_EQ(changed(), nullptr) << "not in the tree yet";
    root->addSublayer(child);
    EXPECT_EQ(changed(), root.get());
    child->change().opacity = 1;
    EXPECT_EQ(changed(), child.get());
    child->setMask(Layer::create());
    EXPECT_EQ(changed(), child.get());
    child->mask()->change().opacity = 0.5;
    EXPECT_EQ(changed(), child->mask().get());
    child->addAnimation("a", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 1));
    child->addAnimation("a", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 2));
    child->removeAnimation("a");
    child->removeAnimation("a");
    EXPECT_EQ(host.told, (std::vector<std::string>{"+a", "+a", "-a"}));
    child->removeFromSuperlayer();
    EXPECT_EQ(changed(), root.get());
    EXPECT_EQ(child->host(), nullptr);
    root->setHost(nullptr);
}

TEST(Layer, MovesToAnotherSuperlayerAndToTheTop) {
    TestHost host;
    const auto root = Layer::create();
    const auto a = Layer::create();
    const auto b = Layer::create();
    root->setHost(&host);
    root->addSublayer(a);
    root->addSublayer(b);
    a->addAnimation("spin", Animation::basic(KeyPath::RotationZ, 0.0, 1.0, 1));
    root->addSublayer(root->sublayers().front());
    EXPECT_EQ(root->sublayers(), (std::vector{b, a}));
    b->addSublayer(a);
    EXPECT_EQ(root->sublayers(), std::vector{b});
    EXPECT_EQ(a->superlayer(), b.get());
    EXPECT_TRUE(a->hasAnimation("spin"));
    root->setHost(nullptr);
}

TEST(Layer, OutlivesItsSuperlayer) {
    TestHost host;
    const auto child = Layer::create();
    const auto mask = Layer::create();
    {
        const auto root = Layer::create();
        root->setHost(&host);
        root->addSublayer(child);
        root->setMask(mask);
    }
    EXPECT_EQ(child->superlayer(), nullptr);
    EXPECT_EQ(child->host(), nullptr);
    EXPECT_EQ(mask->host(), nullptr);
    EXPECT_EQ(mask->masked(), nullptr);
}

TEST(LayerModel, PlacesByTheAnchor) {
    LayerModel model;
    model.anchorPoint = {0.5, 1};
    model.setFrame({70.5, 100, 9, 26});
    EXPECT_EQ(model.position, (Point{75, 126}));
    EXPECT_EQ(model.bounds, (Rect{0, 0, 9, 26}));
    EXPECT_EQ(model.frame(), (Rect{70.5, 100, 9, 26}));
}

} // namespace
} // namespace rb
