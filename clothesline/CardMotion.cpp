#include "clothesline/CardMotion.h"

#include "clothesline/Clothesline.h"
#include "clothesline/LineGeometry.h"
#include "platform/RandomSource.h"

#include <numbers>
#include <string>

namespace rb {

namespace {

constexpr double radiansPerDegree = std::numbers::pi / 180;
// The area that takes clicks reaches a little beyond the card's edge.
constexpr double clickMargin = 2;
constexpr double pushDuration = 0.3;

Animation additive(Animation animation) {
    for (PropertyAnimation& part : animation.parts) {
        part.additive = true;
    }
    return animation;
}

} // namespace

void CardMotion::layout(LayoutOptions options) {
    const auto& items = line_.items();
    for (std::size_t index = 0; index < items.size(); ++index) {
        RBPegItem& item = *items[index];
        if (item.moving) {
            continue;
        }
        const Point anchor = LineGeometry::anchor(index, items.size(), line_.width());
        Layer& swing = *item.swing;
        const bool moves = options.animated && swing.superlayer() != nullptr && swing.model().position != anchor;
        // An arriving card's drop is additive: starting from where it shows would count it twice.
        const Point start = swing.hasAnimation("rb.arrive") ? swing.model().position : swing.presentation().position;
        swing.change().position = anchor;
        if (moves) {
            swing.addAnimation("rb.move", Animation::spring(KeyPath::Position, start, anchor,
                                                            {.mass = 1, .stiffness = 130, .damping = 17.8}));
        }
        item.peg.frame = LineGeometry::cardRect(item.cardSize, anchor).inset(-clickMargin, -clickMargin);
    }
}

void CardMotion::arrive(RBPegItem& item) {
    Layer& swing = *item.swing;
    swing.addAnimation("rb.arrive", additive(Animation::spring(KeyPath::PositionY, 46.0, 0.0,
                                                               {.mass = 1, .stiffness = 224, .damping = 21.5})));
    swing.addAnimation("rb.arriveFade", Animation::basic(KeyPath::Opacity, 0.0, 1.0, 0.22, RBEaseOut));
    swing.addAnimation("rb.arriveSwing", additive(Animation::spring(KeyPath::RotationZ, -0.2792526803190927, 0.0,
                                                                    {.mass = 1, .stiffness = 46, .damping = 2.6})));
}

void CardMotion::nudge(RBPegItem& item, double degrees) {
    Layer& swing = *item.swing;
    if (swing.superlayer() == nullptr) {
        return;
    }
    // Unique keys let overlapping nudges add up.
    const std::string key = "rb.nudge." + std::to_string(++nudgeCounter_);
    const double now = desktop_.runLoop.now();
    const double angle = -degrees * radiansPerDegree;
    Animation push = additive(Animation::basic(KeyPath::RotationZ, 0.0, angle, pushDuration, TimingCurve::easeOut()));
    push.beginTime = now;
    Animation back =
        additive(Animation::spring(KeyPath::RotationZ, angle, 0.0, {.mass = 1, .stiffness = 38, .damping = 2.4}));
    back.beginTime = now + pushDuration;
    swing.addAnimation(key + ".push", std::move(push));
    swing.addAnimation(key + ".back", std::move(back));
}

void CardMotion::scheduleBreeze() {
    breezeTimer_ = desktop_.runLoop.after(desktop_.random.between(7, 16), [this] {
        gust();
        scheduleBreeze();
    });
}

void CardMotion::gust() {
    if (!line_.revealed() || line_.draggingOut()) {
        return;
    }
    for (const RBPegItemRef& item : line_.items()) {
        const double degrees = desktop_.random.between(1.6, 3.4);
        const double delay = desktop_.random.between(0, 0.35);
        gusts_.after(delay, [this, weak = std::weak_ptr<RBPegItem>(item), degrees] {
            if (const RBPegItemRef swaying = weak.lock()) {
                nudge(*swaying, degrees);
            }
        });
    }
}

} // namespace rb
