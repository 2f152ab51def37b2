#include "clothesline/LinePanel.h"

#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "clothesline/LineGeometry.h"
#include "platform/Pointer.h"
#include "platform/RandomSource.h"

#include <algorithm>

namespace rb {

namespace {

constexpr double retractDuration = 0.22;
constexpr double orderOutDelay = 0.3;

std::shared_ptr<Layer> stroke(double width, Color color) {
    auto layer = Layer::create();
    layer->change().content = ShapeContent{.strokeColor = color, .lineWidth = width, .lineCap = LineCap::Round};
    return layer;
}

void setPath(Layer& layer, const Path& path) {
    std::get<ShapeContent>(layer.change().content).path = path;
}

} // namespace

void RBLinePanel::buildPanel(PanelInput& input) {
    panel_ = desktop_.panels.createPanel({.frame = {0, 0, 800, LineGeometry::height},
                                          .level = FloatingWindowLevel,
                                          .collectionBehavior = EverywhereBehavior,
                                          .ignoresMouseEvents = true,
                                          .acceptsFiles = true});
    panel_->setInput(&input);
    slide_ = Layer::create();
    slide_->change().anchorPoint = {0, 0};
    slide_->change().transform.translation = {0, LineGeometry::hiddenOffset};
    rope_ = Layer::create();
    rope_->change().anchorPoint = {0, 0};

    ropeCore_ = stroke(1.2, Color::white(0.55, 1));
    LayerModel& core = ropeCore_->change();
    core.shadowOpacity = 0.22;
    core.shadowRadius = 1.2;
    core.shadowOffset = {0, -1.2};
    ropeLight_ = stroke(0.4, Color::white(1, 0.45));
    std::get<ShapeContent>(ropeLight_->change().content).lineCap = LineCap::Butt;

    // The rope fades out at both ends.
    ropeFade_ = Layer::create();
    ropeFade_->change().content =
        GradientContent{.colors = {Color::clear(), Color::white(0, 1), Color::white(0, 1), Color::clear()},
                        .locations = {0, 0.08, 0.92, 1},
                        .startPoint = {0, 0.5},
                        .endPoint = {1, 0.5}};
    rope_->addSublayer(ropeCore_);
    rope_->addSublayer(ropeLight_);
    rope_->setMask(ropeFade_);
    slide_->addSublayer(rope_);

    dropGlow_ = Layer::create();
    dropGlow_->change().anchorPoint = {0, 0};
    dropGlow_->change().opacity = 0;
    dropGlow_->change().content = GradientContent{};
    panel_->rootLayer()->addSublayer(dropGlow_);
    panel_->rootLayer()->addSublayer(slide_);
}

void RBLinePanel::placeOnScreen(std::optional<Screen> screen) {
    if (!screen) {
        screen = RBScreenAt(desktop_.screens, desktop_.pointer.location());
    }
    if (!screen) {
        screen = desktop_.screens.main();
    }
    if (!screen) {
        const auto all = desktop_.screens.all();
        if (all.empty()) {
            return;
        }
        screen = all.front();
    }
    screenId_ = screen->id;
    const Rect visible = screen->visibleFrame;
    const Rect target{visible.x, visible.maxY() - LineGeometry::height, visible.width, LineGeometry::height};
    if (panel_->frame() != target) {
        panel_->setFrame(target);
    }
    rootResized();
}

void RBLinePanel::screensChanged() {
    placeOnScreen(revealed_ ? screen() : std::nullopt);
}

std::optional<Screen> RBLinePanel::screen() const {
    const auto all = desktop_.screens.all();
    const auto found =
        std::find_if(all.begin(), all.end(), [this](const Screen& candidate) { return candidate.id == screenId_; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

double RBLinePanel::scale() const {
    const double factor = panel_ ? panel_->backingScaleFactor() : 0;
    return factor > 0 ? factor : 2;
}

void RBLinePanel::rootResized() {
    if (!slide_) {
        return;
    }
    const double lineWidth = width();
    const Rect bounds{0, 0, lineWidth, LineGeometry::height};
    slide_->change().bounds = bounds;
    rope_->change().bounds = bounds;
    ropeFade_->change().setFrame(bounds);
    dropGlow_->change().bounds = bounds;
    ropeCore_->change().setFrame(bounds);
    ropeLight_->change().setFrame(bounds.offset(0, 0.35));
    const Path path = LineGeometry::ropePath(lineWidth);
    setPath(*ropeCore_, path);
    setPath(*ropeLight_, path);
    RBSetScale(*rope_, scale());
    positionHint();
    line_.layout({.animated = false});
}

double RBLinePanel::slideOffset() const {
    return slide_->presentation().transform.translation.y;
}

void RBLinePanel::setRevealed(bool revealed) {
    if (revealed == revealed_) {
        return;
    }
    revealed_ = revealed;
    const std::uint64_t generation = ++hideGeneration_;
    // Motion always starts from where the line visibly is.
    const double current = slideOffset();
    if (revealed) {
        panel_->orderFrontRegardless();
        slide_->change().transform = {};
        slide_->addAnimation("rb.slide", Animation::spring(KeyPath::TranslationY, current, 0.0,
                                                           {.mass = 1, .stiffness = 224, .damping = 24.5}));
        for (const RBPegItemRef& item : line_.items()) {
            line_.nudge(*item, desktop_.random.between(1.2, 2.8));
        }
        return;
    }
    panel_->setIgnoresMouseEvents(true);
    panel_->setMouseAreas({});
    for (const RBPegItemRef& item : line_.items()) {
        setItemHovered(*item, false);
        setItemPressed(*item, false);
    }
    slide_->change().transform.translation = {0, LineGeometry::hiddenOffset};
    slide_->addAnimation("rb.slide", Animation::basic(KeyPath::TranslationY, current, LineGeometry::hiddenOffset,
                                                      retractDuration, TimingCurve::easeIn()));
    orderOut_.after(orderOutDelay, [this, generation] {
        if (hideGeneration_ == generation && !revealed_) {
            panel_->orderOut();
        }
    });
}

void RBLinePanel::showHint(const std::string& text) {
    if (text == hintString_) {
        return;
    }
    hintString_ = text;
    if (hint_) {
        RBAnimateLayerValue(hint_, KeyPath::Opacity, 0.0, 0.18);
        orderOut_.after(0.18, [old = hint_] { old->removeFromSuperlayer(); });
        hint_.reset();
    }
    if (!text.empty()) {
        hint_ = RBCapsule(desktop_, text, 12);
        hint_->change().opacity = 0;
        RBSetScale(*hint_, scale());
        slide_->addSublayer(hint_);
        positionHint();
        RBAnimateLayerValue(hint_, KeyPath::Opacity, 1.0, 0.25);
    }
}

void RBLinePanel::positionHint() {
    if (hint_) {
        // In the middle, a card's drop under the rope.
        const double x = width() / 2;
        hint_->change().position = {std::round(x), std::round(LineGeometry::anchorHeight(x, width()) - 46)};
    }
}

} // namespace rb
