// Each animation's completion is called exactly once, whatever the others do meanwhile.

#include "tests/motion/TestHost.h"

#include <gtest/gtest.h>

#include <utility>

namespace rb {
namespace {

class Completions : public testing::Test {
protected:
    Completions() {
        root->setHost(&host);
        root->addSublayer(child);
    }
    ~Completions() override { root->setHost(nullptr); }

    // Writes down its name, and "!" when it didn't finish; then does something.
    Animation fade(const std::string& name, double duration, std::function<void()> work = nullptr) {
        Animation animation = Animation::basic(KeyPath::Opacity, 0.0, 1.0, duration);
        animation.completion = [this, name, work = std::move(work)](bool finished) {
            log.push_back(finished ? name : name + "!");
            if (work) {
                work();
            }
        };
        return animation;
    }
    std::vector<std::string> take() { return std::exchange(log, {}); }
    using Log = std::vector<std::string>;

    TestHost host;
    std::shared_ptr<Layer> root = Layer::create();
    std::shared_ptr<Layer> child = Layer::create();
    Log log;
};

TEST_F(Completions, ComeInTheOrderOfTheEndsOnce) {
    child->addAnimation("late", fade("late", 3));
    child->addAnimation("tie 2", fade("tie 2", 2));
    child->addAnimation("early", fade("early", 1));
    child->addAnimation("a tie", fade("tie 3", 2));
    root->addAnimation("tie 1", fade("tie 1", 2));
    root->endDueAnimations(host.time + 0.999);
    EXPECT_EQ(take(), Log{});
    root->endDueAnimations(host.time + 2);
    EXPECT_EQ(take(), (Log{"early", "tie 1", "tie 2", "tie 3"}));
    root->endDueAnimations(host.time + 2);
    EXPECT_EQ(take(), Log{});
    root->endDueAnimations(host.time + 3);
    EXPECT_EQ(take(), Log{"late"});
    EXPECT_TRUE(child->animationKeys().empty());
}

TEST_F(Completions, TellOfReplacementAndRemoval) {
    child->addAnimation("a", fade("first", 1));
    child->addAnimation("a", fade("second", 1));
    EXPECT_EQ(take(), Log{"first!"});
    child->removeAnimation("a");
    child->removeAnimation("a");
    EXPECT_EQ(take(), Log{"second!"});
    child->addAnimation("z", fade("z", 1));
    child->addAnimation("a", fade("a", 1));
    child->removeAllAnimations();
    EXPECT_EQ(take(), (Log{"z!", "a!"}));

    const auto mask = Layer::create();
    child->setMask(mask);
    mask->addAnimation("m", fade("mask", 1));
    child->addAnimation("a", fade("a", 1));
    child->removeFromSuperlayer();
    EXPECT_EQ(take(), (Log{"a!", "mask!"}));
    root->endDueAnimations(host.time + 5);
    EXPECT_EQ(take(), Log{});
}

TEST_F(Completions, OfAHeldAnimationComesAtItsEndAndNotAgain) {
    Animation held = fade("held", 1);
    held.holdsAtEnd = true;
    child->addAnimation("a", held);
    root->endDueAnimations(host.time + 1);
    EXPECT_EQ(take(), Log{"held"});
    child->removeAnimation("a");
    EXPECT_EQ(take(), Log{});

    child->addAnimation("a", held);
    child->endAnimation("a", true);
    EXPECT_TRUE(child->hasAnimation("a"));
    child->addAnimation("b", fade("b", 1));
    child->endAnimation("b", false);
    EXPECT_FALSE(child->hasAnimation("b"));
    EXPECT_EQ(take(), (Log{"held", "b!"}));
}

TEST_F(Completions, MayRemoveOthersThatAreDueAtTheSameTime) {
    // Both have ended; the removal of the second one comes too late to make it unfinished.
    child->addAnimation("a", fade("a", 1, [this] { child->removeFromSuperlayer(); }));
    child->addAnimation("b", fade("b", 1));
    child->addAnimation("c", fade("c", 9));
    root->endDueAnimations(host.time + 1);
    EXPECT_EQ(take(), (Log{"a", "c!", "b"}));
    EXPECT_TRUE(root->sublayers().empty());
}

TEST_F(Completions, MayDestroyTheLayerAndItsTree) {
    root->addAnimation("keeps the rest", fade("root", 9));
    child->addAnimation("a", fade("a", 1, [this] {
                            root->setHost(nullptr);
                            child.reset();
                            root = Layer::create();
                        }));
    child->addAnimation("b", fade("b", 1));
    const auto kept = root;
    root->endDueAnimations(host.time + 1);
    EXPECT_EQ(take(), (Log{"a", "b"}));
}

TEST_F(Completions, MayStartTheNextAnimationUnderTheSameKey) {
    child->addAnimation("a", fade("a", 1, [this] {
                            host.time += 1;
                            child->addAnimation("a", fade("again", 1));
                        }));
    root->endDueAnimations(host.time + 1);
    EXPECT_EQ(take(), Log{"a"});
    EXPECT_DOUBLE_EQ(*root->nextEnd(host.time), host.time + 1);
    root->endDueAnimations(host.time + 1);
    EXPECT_EQ(take(), Log{"again"});
}

TEST_F(Completions, OfAReplacedAnimationMayDropTheLayer) {
    auto alone = Layer::create();
    alone->addAnimation("a", fade("a", 1, [&alone] { alone.reset(); }));
    alone->addAnimation("a", fade("b", 1));
    EXPECT_EQ(alone, nullptr);
    EXPECT_EQ(take(), Log{"a!"}) << "b died with its layer, which tells no one";
}

} // namespace
} // namespace rb
