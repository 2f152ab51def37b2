#include "desktops/macos/LayerMirror.h"

#include "desktops/macos/Bitmap.h"
#include "tests/macos/MacTest.h"

#include <new>
#include <utility>

namespace rb {

namespace {

class LayerMirrorTest : public fake::MacTest {
protected:
    void TearDown() override {
        mirror_ = nullptr;
        MacTest::TearDown();
    }

    void show() { mirror_ = std::make_unique<LayerMirror>(root_); }
    void endTurn() { [mirror_->nativeRoot().delegate layoutSublayersOfLayer:mirror_->nativeRoot()]; }
    CALayer* native() { return mirror_->nativeRoot().sublayers.firstObject; }
    CALayer* native(NSUInteger index) { return native().sublayers[index]; }
    static CAAnimation* added(const std::string& key) {
        CAAnimation* found = nil;
        for (const auto& call : fake::calls("-[CALayer addAnimation:forKey:]")) {
            if (call.string(1) == key) {
                found = call.object(0);
            }
        }
        EXPECT_NE(found, nil) << "no animation " << key;
        return found;
    }
    static void stop(CAAnimation* animation, bool finished) {
        [(id<CAAnimationDelegate>)animation.delegate animationDidStop:animation finished:finished];
    }

    std::shared_ptr<Layer> root_ = Layer::create();
    std::unique_ptr<LayerMirror> mirror_;
};

TEST_F(LayerMirrorTest, isCompleteFromTheBeginningWithoutImplicitActions) {
    root_->change().setFrame({10, 20, 30, 40});
    const auto child = Layer::create();
    child->change().opacity = 0.5;
    root_->addSublayer(child);
    show();
    EXPECT_EQ(native().bounds.size.height, 40);
    EXPECT_EQ(native().position.x, 25);
    EXPECT_EQ(native(0).opacity, 0.5f);
    EXPECT_EQ(fake::lastCall("+[CATransaction setDisableActions:]").integer(0), 1);
    EXPECT_EQ(fake::calls("+[CATransaction begin]").size(), fake::calls("+[CATransaction commit]").size());
}

TEST_F(LayerMirrorTest, carriesOverOnceAtTheEndOfTheTurn) {
    show();
    fake::forgetCalls();
    LayerModel& model = root_->change();
    model.cornerRadius = 7;
    root_->change().hidden = true;
    model.borderWidth = 2; // written after the host was told
    EXPECT_TRUE(fake::calls("-[CALayer setCornerRadius:]").empty());
    EXPECT_GE(fake::calls("-[CALayer setNeedsLayout]").size(), 1u);
    endTurn();
    EXPECT_EQ(native().cornerRadius, 7);
    EXPECT_EQ(native().borderWidth, 2);
    EXPECT_TRUE(native().hidden);
    EXPECT_EQ(fake::calls("-[CALayer setCornerRadius:]").size(), 1u);

    fake::forgetCalls();
    endTurn();
    EXPECT_TRUE(fake::calls("-[CALayer setBounds:]").empty()) << "nothing changed";
}

TEST_F(LayerMirrorTest, choosesTheClassByTheContentAndReplacesItWhenThatChanges) {
    const auto shape = Layer::create();
    const auto inner = Layer::create();
    shape->addSublayer(inner);
    root_->addSublayer(shape);
    show();
    EXPECT_TRUE([native(0) isMemberOfClass:CALayer.class]);
    CALayer* nativeInner = native(0).sublayers.firstObject;

    ShapeContent content;
    content.path.moveTo({1, 2}).lineTo({3, 4}).quadTo({5, 6}, {7, 8}).close();
    content.strokeColor = Color{1, 0, 0, 1};
    content.lineWidth = 3;
    content.lineCap = LineCap::Round;
    shape->change().content = content;
    fake::forgetCalls();
    endTurn();
    ASSERT_TRUE([native(0) isMemberOfClass:CAShapeLayer.class]);
    CAShapeLayer* nativeShape = (CAShapeLayer*)native(0);
    EXPECT_EQ(nativeShape.lineWidth, 3);
    EXPECT_EQ(nativeShape.lineCap, kCALineCapRound);
    EXPECT_EQ(nativeShape.fillColor, nullptr);
    EXPECT_NE(nativeShape.strokeColor, nullptr);
    EXPECT_EQ(nativeShape.sublayers.firstObject, nativeInner);
    EXPECT_EQ(fake::calls("CGPathAddQuadCurveToPoint").size(), 1u);
    EXPECT_EQ(fake::calls("CGPathRelease").size(), fake::calls("CGPathCreateMutable").size() + 1)
        << "the shape's path, and none for the shadow";

    root_->change();
    shape->change().content = GradientContent{.colors = {Color::white(1, 1), Color::clear()}, .locations = {0, 1}};
    endTurn();
    CAGradientLayer* gradient = (CAGradientLayer*)native(0);
    ASSERT_TRUE([gradient isMemberOfClass:CAGradientLayer.class]);
    EXPECT_EQ(gradient.colors.count, 2u);
    EXPECT_EQ(gradient.locations[1].doubleValue, 1);

    shape->change().content = TextContent{.text = "Größe", .truncation = Truncation::Middle};
    endTurn();
    CATextLayer* text = (CATextLayer*)native(0);
    ASSERT_TRUE([text isMemberOfClass:CATextLayer.class]);
    EXPECT_TRUE([text.string isEqual:@"Größe"]);
    EXPECT_EQ(text.truncationMode, kCATruncationMiddle);
}

TEST_F(LayerMirrorTest, followsTheTreeAndLetsGoOfWhatLeft) {
    const auto a = Layer::create();
    auto b = Layer::create();
    a->change().cornerRadius = 1;
    b->change().cornerRadius = 2;
    root_->addSublayer(a);
    root_->addSublayer(b);
    const auto mask = Layer::create();
    root_->setMask(mask);
    @autoreleasepool {
        show();
        EXPECT_NE(native().mask, nil);
        EXPECT_EQ(native(1).cornerRadius, 2);
        root_->addSublayer(a); // to the front
        endTurn();
        EXPECT_EQ(native(0).cornerRadius, 2);
    }

    __weak CALayer* gone = nil;
    @autoreleasepool {
        gone = native(0);
        EXPECT_NE(gone, nil);
        b->removeFromSuperlayer();
        b.reset();
        root_->setMask(nullptr);
        endTurn();
    }
    fake::forgetCalls();
    EXPECT_EQ(native().sublayers.count, 1u);
    EXPECT_EQ(native().mask, nil);
    EXPECT_EQ(gone, nil);
}

// AddressSanitizer holds freed memory back until much more is freed.
void giveFreedMemoryBack() {
    for (int i = 0; i < 8; ++i) {
        ::operator delete(::operator new(64UL << 20U));
    }
}

// The memory of a card that went is often the next card's.
TEST_F(LayerMirrorTest, aNewLayerInTheMemoryOfAnOldOneIsShownAsItIs) {
    show();
    auto old = Layer::create();
    old->change().cornerRadius = 9;
    root_->addSublayer(old);
    endTurn();
    const void* address = old.get();
    old->removeFromSuperlayer();
    old.reset();
    giveFreedMemoryBack();
    std::vector<std::shared_ptr<Layer>> others;
    auto fresh = Layer::create();
    while (fresh.get() != address && others.size() < 10000) {
        others.push_back(std::exchange(fresh, Layer::create()));
    }
    ASSERT_EQ(fresh.get(), address) << "the memory was never used again";
    fresh->change().cornerRadius = 3;
    fresh->addAnimation("rb.fade", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 1));
    root_->addSublayer(fresh);
    endTurn();
    EXPECT_EQ(native(0).cornerRadius, 3);
    EXPECT_NE([native(0) animationForKey:@"rb.fade"], nil);
}

TEST_F(LayerMirrorTest, aLayerThatLeftAndCameBackShowsWhatHappenedMeanwhile) {
    const auto card = Layer::create();
    const auto face = Layer::create();
    card->addSublayer(face);
    root_->addSublayer(card);
    show();
    card->removeFromSuperlayer();
    card->change().cornerRadius = 5;
    face->change().cornerRadius = 4;
    face->addAnimation("rb.fade", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 1));
    root_->addSublayer(card);
    endTurn();
    EXPECT_EQ(native(0).cornerRadius, 5);
    EXPECT_EQ(native(0).sublayers.firstObject.cornerRadius, 4);
    EXPECT_NE([native(0).sublayers.firstObject animationForKey:@"rb.fade"], nil);
}

TEST_F(LayerMirrorTest, aLayerMovesToAnotherOneWithItsAnimation) {
    const auto a = Layer::create();
    const auto b = Layer::create();
    const auto moving = Layer::create();
    root_->addSublayer(a);
    root_->addSublayer(b);
    b->addSublayer(moving);
    show();
    moving->addAnimation("rb.move", Animation::basic(KeyPath::PositionX, 0.0, 1.0, 1));
    endTurn();
    CALayer* native = this->native(1).sublayers.firstObject;
    fake::forgetCalls();
    a->addSublayer(moving);
    endTurn();
    EXPECT_EQ(this->native(0).sublayers.firstObject, native);
    EXPECT_EQ(this->native(1).sublayers.count, 0u);
    EXPECT_TRUE(fake::calledInOrder({"-[CALayer removeFromSuperlayer]", "-[CALayer setSublayers:]"}))
        << "what is set as a sublayer must hang nowhere";
    EXPECT_NE([native animationForKey:@"rb.move"], nil);
}

TEST_F(LayerMirrorTest, motionsOfOneLayerAddUpUnderTheirOwnKeys) {
    fake::onCall("-[CALayer convertTime:fromLayer:]", [](fake::Call& call) { call.answer(call.real(0)); });
    const auto swing = Layer::create();
    root_->addSublayer(swing);
    show();
    const auto nudge = [&](const std::string& key, double begin) {
        Animation push = Animation::basic(KeyPath::RotationZ, 0.0, -0.07, 0.3, TimingCurve::easeOut());
        push.parts.front().additive = true;
        push.beginTime = begin;
        swing->addAnimation(key, push);
    };
    nudge("rb.nudge.1.push", 1000);
    nudge("rb.nudge.2.push", 1000.3);
    endTurn();
    ASSERT_EQ(native(0).animationKeys.count, 2u);
    for (NSString* key in @[ @"rb.nudge.1.push", @"rb.nudge.2.push" ]) {
        CABasicAnimation* push = (CABasicAnimation*)[native(0) animationForKey:key];
        EXPECT_TRUE([push.keyPath isEqualToString:@"transform.rotation.z"]);
        EXPECT_TRUE(push.additive);
        EXPECT_EQ([push.toValue doubleValue], -0.07);
    }
    EXPECT_EQ([native(0) animationForKey:@"rb.nudge.2.push"].beginTime, 1000.3);

    // What is visible now comes from the clock by which Core Animation runs.
    fake::advance(0.15);
    const double half = swing->presentation().transform.rotation;
    EXPECT_LT(half, 0);
    EXPECT_GT(half, -0.07);

    nudge("rb.nudge.1.push", 1001); // replaces
    swing->removeAnimation("rb.nudge.2.push");
    endTurn();
    ASSERT_EQ(native(0).animationKeys.count, 1u);
    EXPECT_EQ([native(0) animationForKey:@"rb.nudge.1.push"].beginTime, 1001);

    CALayer* native = this->native(0);
    swing->removeFromSuperlayer();
    endTurn();
    EXPECT_EQ(native.animationKeys.count, 0u);
}

TEST_F(LayerMirrorTest, zPositionsAreCarriedOver) {
    const auto peg = Layer::create();
    peg->change().zPosition = 1;
    root_->addSublayer(peg);
    show();
    EXPECT_EQ(native(0).zPosition, 1);
}

TEST_F(LayerMirrorTest, translatesPropertyAnimations) {
    fake::answer("-[CASpringAnimation settlingDuration]", 1.25);
    fake::answer("-[CALayer convertTime:fromLayer:]", 42.0);
    show();
    Animation spring =
        Animation::spring(KeyPath::TranslationY, 34.2, 0.0, {.mass = 1, .stiffness = 220, .damping = 17});
    spring.parts.front().additive = true;
    spring.beginTime = 1001;
    root_->addAnimation("rb.drop", spring);
    root_->addAnimation("rb.move", Animation::basic(KeyPath::Position, Point{1, 2}, Point{3, 4}, 0.18, RBEaseOut));
    EXPECT_TRUE(fake::calls("-[CALayer addAnimation:forKey:]").empty());
    endTurn();

    CASpringAnimation* drop = (CASpringAnimation*)added("rb.drop");
    ASSERT_TRUE([drop isMemberOfClass:CASpringAnimation.class]);
    EXPECT_TRUE([drop.keyPath isEqualToString:@"transform.translation.y"]);
    EXPECT_EQ([drop.fromValue doubleValue], 34.2);
    EXPECT_EQ([drop.toValue doubleValue], 0);
    EXPECT_EQ(drop.mass, 1);
    EXPECT_EQ(drop.stiffness, 220);
    EXPECT_EQ(drop.damping, 17);
    EXPECT_EQ(drop.duration, 1.25);
    EXPECT_TRUE(drop.additive);
    EXPECT_EQ(fake::lastCall("-[CALayer convertTime:fromLayer:]").real(0), 1001);
    EXPECT_EQ(drop.beginTime, 42);

    CABasicAnimation* move = (CABasicAnimation*)added("rb.move");
    EXPECT_EQ([move.toValue pointValue].y, 4);
    EXPECT_EQ(move.duration, 0.18);
    EXPECT_FALSE(move.additive);
    const auto curve = fake::lastCall("+[CAMediaTimingFunction functionWithControlPoints::::]");
    EXPECT_FLOAT_EQ(static_cast<float>(curve.real(1)), 0.9f);
    EXPECT_FLOAT_EQ(static_cast<float>(curve.real(2)), 0.25f);
}

TEST_F(LayerMirrorTest, translatesGroupsThatHoldTheirEnd) {
    show();
    Animation group;
    group.parts = {{.keyPath = KeyPath::TranslationY, .from = 0.0, .to = 26.6},
                   {.keyPath = KeyPath::BackgroundColor, .from = Color::clear(), .to = Color::white(1, 1)}};
    group.duration = 0.22;
    group.groupTiming = TimingCurve::easeIn();
    group.holdsAtEnd = true;
    root_->addAnimation("rb.retract", group);
    endTurn();
    CAAnimationGroup* native = (CAAnimationGroup*)added("rb.retract");
    ASSERT_TRUE([native isMemberOfClass:CAAnimationGroup.class]);
    EXPECT_EQ(native.duration, 0.22);
    EXPECT_EQ(native.fillMode, kCAFillModeForwards);
    EXPECT_FALSE(native.removedOnCompletion);
    ASSERT_EQ(native.animations.count, 2u);
    CABasicAnimation* color = (CABasicAnimation*)native.animations[1];
    EXPECT_TRUE([color.keyPath isEqualToString:@"backgroundColor"]);
    EXPECT_EQ(color.duration, 0.22);
    EXPECT_NE(color.toValue, nil);
}

TEST_F(LayerMirrorTest, tellsTheEndOfTheAnimationThatRunsAndOfNoOther) {
    show();
    std::vector<std::string> told;
    const auto add = [&](const std::string& name) {
        Animation animation = Animation::basic(KeyPath::Opacity, 0.0, 1.0, 1);
        animation.completion = [&told, name](bool finished) { told.push_back(name + (finished ? " finished" : "")); };
        root_->addAnimation("rb.fade", std::move(animation));
        endTurn();
        return added("rb.fade");
    };
    CAAnimation* first = add("first");
    CAAnimation* second = add("second");
    EXPECT_EQ(told, (std::vector<std::string>{"first"}));
    stop(first, false); // Core Animation tells late that it was replaced
    EXPECT_TRUE(root_->hasAnimation("rb.fade"));
    stop(second, true);
    EXPECT_EQ(told, (std::vector<std::string>{"first", "second finished"}));
    EXPECT_FALSE(root_->hasAnimation("rb.fade"));
    stop(second, true);
    EXPECT_EQ(told.size(), 2u);

    CAAnimation* third = add("third");
    root_->removeAnimation("rb.fade");
    EXPECT_EQ(fake::lastCall("-[CALayer removeAnimationForKey:]").string(0), "rb.fade");
    stop(third, false);
    EXPECT_EQ(told.size(), 3u);
}

TEST_F(LayerMirrorTest, anEndAfterItsTimeFindsNobody) {
    show();
    auto child = Layer::create();
    root_->addSublayer(child);
    child->addAnimation("rb.fade", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 1));
    endTurn();
    CAAnimation* ofChild = added("rb.fade");
    root_->addAnimation("rb.slide", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 1));
    endTurn();
    CAAnimation* ofRoot = added("rb.slide");
    child->removeFromSuperlayer();
    child.reset();
    stop(ofChild, false);
    id delegate = mirror_->nativeRoot().delegate;
    CALayer* nativeRoot = mirror_->nativeRoot();
    mirror_ = nullptr;
    stop(ofRoot, true);
    EXPECT_TRUE(root_->hasAnimation("rb.slide")) << "not shown any more, so it keeps waiting";
    [delegate layoutSublayersOfLayer:nativeRoot];
}

TEST_F(LayerMirrorTest, theCompletionMayTakeTheTreeDown) {
    show();
    Animation animation = Animation::basic(KeyPath::Opacity, 0.0, 1.0, 1);
    animation.completion = [this](bool) {
        mirror_ = nullptr;
        root_ = nullptr;
    };
    root_->addAnimation("rb.fade", std::move(animation));
    endTurn();
    stop(added("rb.fade"), true);
    EXPECT_EQ(root_, nullptr);
}

} // namespace

} // namespace rb
