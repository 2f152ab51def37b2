#include "screenshots/CaptureFlight.h"

#include "clothesline/CardLayers.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace rb {

namespace {

constexpr double duration = 0.65;
constexpr double frameInterval = 1.0 / 120;
constexpr double fadeDuration = 0.16;
constexpr double arc = 30; // how far the path rises above the straight line
constexpr double cardRadius = 16;
constexpr double cardPadding = 4;
constexpr double rimWidth = 1.5;

} // namespace

RBCaptureFlight::RBCaptureFlight(const Desktop& desktop, const CaptureFlightPlan& plan,
                                 std::function<void()> completion)
    : desktop_(desktop)
    , window_(desktop.panels.createPanel({.frame = plan.screen ? plan.screen->frame : Rect{},
                                          .level = FlightWindowLevel,
                                          .collectionBehavior = EverywhereBehavior,
                                          .ignoresMouseEvents = true}))
    , container_(Layer::create())
    , glass_(Layer::create())
    , photo_(Layer::create())
    , edge_(Layer::create())
    , edgeMask_(Layer::create())
    , clip_(RBMakeClip())
    , from_(plan.from)
    , to_(plan.to)
    , tilt_(plan.tilt)
    , completion_(completion ? std::move(completion) : [] {}) {
    LayerModel& container = container_->change();
    container.anchorPoint = {0.5, 1};
    container.shadowColor = {0, 0, 0, 1};
    container.shadowOpacity = 0.24;
    container.shadowRadius = 10;
    container.shadowOffset = {0, -5};
    glass_->change().backgroundColor = Color::white(plan.dark ? 0.17 : 0.97, 0.78);
    edge_->change().content = GradientContent{
        .colors = {Color::white(1, 0.9), Color::white(1, 0.25)}, .startPoint = {0.5, 1}, .endPoint = {0.5, 0}};
    edgeMask_->change().content = ShapeContent{.strokeColor = Color::white(0, 1), .lineWidth = rimWidth};
    edge_->setMask(edgeMask_);
    LayerModel& photo = photo_->change();
    photo.contents = plan.image;
    photo.contentsGravity = ContentsGravity::ResizeAspectFill;
    photo.masksToBounds = true;
    for (const auto& layer : {glass_, photo_, edge_, clip_}) {
        container_->addSublayer(layer);
    }
    RBSetScale(*container_, plan.screen ? plan.screen->backingScaleFactor : 1);
    window_->rootLayer()->addSublayer(container_);
}

void RBCaptureFlight::run(std::function<void()> gone) {
    gone_ = std::move(gone);
    update(0);
    window_->orderFrontRegardless();
    start_ = desktop_.runLoop.now();
    timer_ = desktop_.runLoop.every(frameInterval, 0, [this] { tick(); });
}

void RBCaptureFlight::tick() {
    const double t = std::min((desktop_.runLoop.now() - start_) / duration, 1.0);
    update(t);
    if (t < 1) {
        return;
    }
    timer_.reset();
    std::exchange(completion_, nullptr)();
    const auto& root = window_->rootLayer();
    root->change().opacity = 0;
    Animation fade = Animation::basic(KeyPath::Opacity, 1.0, 0.0, fadeDuration, TimingCurve::linear());
    fade.completion = [this](bool) {
        window_->orderOut();
        gone_();
    };
    root->addAnimation("rb.fade", std::move(fade));
}

void RBCaptureFlight::update(double t) {
    const double eased = t < 0.5 ? 4 * t * t * t : 1 - std::pow(2 - 2 * t, 3) / 2;
    const double x = std::clamp((eased - 0.35) / 0.65, 0.0, 1.0);
    const double shows = x * x * (3 - 2 * x); // back, rim and peg join in late
    const auto lerp = [eased](double a, double b) { return a + (b - a) * eased; };

    const Rect window = window_->frame();
    const double width = lerp(from_.width, to_.width);
    const double height = lerp(from_.height, to_.height);
    const double radius = lerp(0, cardRadius);
    const double inset = cardPadding * eased;
    const Rect bounds{0, 0, width, height};

    LayerModel& container = container_->change();
    container.bounds = bounds;
    container.position = {lerp(from_.midX(), to_.midX()) - window.x,
                          lerp(from_.maxY(), to_.maxY()) - window.y + arc * std::sin(std::numbers::pi * eased)};
    container.transform.rotation = -tilt_ * std::numbers::pi / 180 * eased;
    container.shadowPath = Path::roundedRect(bounds, radius);

    LayerModel& glass = glass_->change();
    glass.setFrame(bounds);
    glass.cornerRadius = radius;
    glass.opacity = shows;

    edge_->change().setFrame(bounds);
    edge_->change().opacity = shows;
    edgeMask_->change().setFrame(bounds);
    const double rimRadius =
        std::min({std::max(radius - rimWidth / 2, 0.0), (width - rimWidth) / 2, (height - rimWidth) / 2});
    std::get<ShapeContent>(edgeMask_->change().content).path =
        Path::roundedRect(bounds.inset(rimWidth / 2, rimWidth / 2), rimRadius);

    photo_->change().setFrame(bounds.inset(inset, inset));
    photo_->change().cornerRadius = std::max(radius - inset, 0.0);

    clip_->change().setFrame({width * 0.5 - 4.5, height - 12, 9, 26});
    clip_->change().opacity = shows;
}

void RBCaptureFlights::flyImage(const CaptureFlightPlan& plan, std::function<void()> completion) {
    flights_.push_back(std::make_shared<RBCaptureFlight>(desktop_, plan, std::move(completion)));
    const auto place = std::prev(flights_.end());
    (*place)->run([this, place] {
        // The flight is in the middle of its own fade's end, so its memory goes a turn later.
        desktop_.runLoop.post([gone = std::move(*place)] {});
        flights_.erase(place);
    });
}

std::size_t RBCaptureFlights::inProgress() const {
    return static_cast<std::size_t>(
        std::count_if(flights_.begin(), flights_.end(), [](const auto& flight) { return flight->inProgress(); }));
}

} // namespace rb
