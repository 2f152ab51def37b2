#include "clothesline/CardFall.h"

#include "platform/LayerRenderer.h"
#include "platform/Panels.h"
#include "platform/RunLoop.h"

#include <numbers>
#include <utility>

namespace rb {

namespace {

constexpr double duration = 0.55;
constexpr double depth = 520;
constexpr TimingCurve accelerating{{0.55, 0.055}, {0.675, 0.19}};

// The card without rim, close mark and confirmation.
std::shared_ptr<const Bitmap> snapshot(LayerRenderer& renderer, RBPegItem& item, double scale) {
    const auto setHidden = [&item](bool hidden) {
        for (const auto& layer : {item.edge, item.cross, item.pill}) {
            layer->change().hidden = hidden;
        }
    };
    setHidden(true);
    auto picture = renderer.render(*item.swing, scale);
    setHidden(false);
    return picture;
}

} // namespace

CardFall::~CardFall() = default;

std::unique_ptr<Panel> CardFall::overlayOn(const std::optional<Screen>& screen) {
    return desktop_.panels.createPanel({.frame = screen ? screen->frame : Rect{},
                                        .level = FlightWindowLevel,
                                        .collectionBehavior = EverywhereBehavior,
                                        .ignoresMouseEvents = true});
}

void CardFall::fall(RBPegItem& item, Point place, const std::optional<Screen>& screen, double scale) {
    auto overlay = overlayOn(screen);
    const Rect frame = overlay->frame();
    const double startAngle = -item.tilt * std::numbers::pi / 180;
    const double endAngle = -(item.tilt + 7 * item.tilt + 20) * std::numbers::pi / 180;

    const auto falling = Layer::create();
    LayerModel& model = falling->change();
    model.contents = snapshot(desktop_.layerRenderer, item, scale);
    model.contentsScale = scale;
    model.bounds = item.swing->model().bounds;
    model.anchorPoint = {0.5, 1};
    const double startY = place.y - frame.y;
    model.position = {place.x - frame.x, startY - depth};
    model.transform.rotation = endAngle;
    model.opacity = 0;
    overlay->rootLayer()->addSublayer(falling);

    overlays_.push_back(std::move(overlay));
    const auto entry = std::prev(overlays_.end());
    Animation animation;
    animation.parts = {{.keyPath = KeyPath::PositionY, .from = startY, .to = startY - depth},
                       {.keyPath = KeyPath::RotationZ, .from = startAngle, .to = endAngle},
                       {.keyPath = KeyPath::Opacity, .from = 1.0, .to = 0.0}};
    animation.duration = duration;
    animation.groupTiming = accelerating;
    animation.completion = [this, entry](bool finished) {
        if (finished) {
            (*entry)->orderOut();
            // The overlay is in the middle of its own animation's end, so its memory goes a turn later.
            desktop_.runLoop.post([gone = std::shared_ptr<Panel>(std::move(*entry))] {});
            overlays_.erase(entry);
        }
    };
    (*entry)->orderFrontRegardless();
    falling->addAnimation("rb.fall", std::move(animation));
}

} // namespace rb
