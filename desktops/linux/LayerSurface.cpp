#include "desktops/linux/LayerSurface.h"

#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/LayerPainter.h"
#include "platform/RunLoop.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>
#include <utility>

namespace rb {

namespace {

double frameInterval() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double rate = screen ? screen->refreshRate() : 60;
    return 1 / std::clamp(rate, 30.0, 60.0);
}

// How far a layer must have come, in points, before anybody sees it.
constexpr double visibleStep = 1.0 / 16;
constexpr double visibleFade = 1.0 / 512;

bool liesApart(const QTransform& a, const QTransform& b, const Rect& bounds) {
    const Rect reach = bounds.inset(-bounds.width / 4, -bounds.height / 4);
    for (const QPointF corner : {QPointF(reach.x, reach.y), QPointF(reach.maxX(), reach.y),
                                 QPointF(reach.x, reach.maxY()), QPointF(reach.maxX(), reach.maxY())}) {
        const QPointF way = a.map(corner) - b.map(corner);
        if (std::hypot(way.x(), way.y()) > visibleStep) {
            return true;
        }
    }
    return false;
}

} // namespace

void LayerTicker::add(LayerSurface& surface) {
    surfaces_.push_back(&surface);
}

void LayerTicker::remove(LayerSurface& surface) {
    std::erase(surfaces_, &surface);
}

void LayerTicker::wake() {
    if (!timer_ && !std::exchange(woken_, true)) {
        loop_.post(lifetime_.guard([this] { tick(); }));
    }
}

void LayerTicker::tick() {
    woken_ = false;
    const double now = loop_.now();
    // Completions may show, hide and destroy surfaces, and a surface on its way out isn't looked at any more.
    const auto surfaces = surfaces_;
    for (LayerSurface* surface : surfaces) {
        if (std::find(surfaces_.begin(), surfaces_.end(), surface) != surfaces_.end()) {
            const auto root = surface->root();
            root->endDueAnimations(now);
        }
    }
    bool moves = false;
    for (LayerSurface* surface : std::vector(surfaces_)) {
        surface->frame(now);
        moves = moves || surface->root()->movesUntil(now);
    }
    if (!moves) {
        timer_.reset();
        painter_.rest();
    } else if (!timer_) {
        timer_ = loop_.every(frameInterval(), 0, [this] { tick(); });
    }
}

LayerSurface::LayerSurface(LayerTicker& ticker, std::shared_ptr<Layer> root,
                           std::function<void(const QRegion&)> repaint)
    : ticker_(ticker)
    , root_(std::move(root))
    , repaint_(std::move(repaint)) {}

LayerSurface::~LayerSurface() {
    hide();
}

void LayerSurface::show() {
    if (shown_) {
        return;
    }
    shown_ = true;
    frameTime_ = ticker_.loop().now();
    ticker_.add(*this);
    root_->setHost(this);
}

void LayerSurface::hide() {
    if (!shown_) {
        return;
    }
    shown_ = false;
    ticker_.painter().sprites().forgetTree(*root_);
    ticker_.remove(*this);
    root_->setHost(nullptr);
    changed_.clear();
    moving_.clear();
    dirty_ = {};
}

void LayerSurface::paint(QPainter& painter, const QRectF& area) {
    ticker_.painter().paint(painter, *root_, frameTime_, toCanvas_, area);
}

void LayerSurface::paintRegion(QPainter& painter, const QRegion& region) {
    ticker_.painter().paintRegion(painter, *root_, frameTime_, toCanvas_, region);
}

double LayerSurface::mediaTime() const {
    return ticker_.loop().now();
}

void LayerSurface::layerChanged(Layer& layer) {
    ticker_.painter().sprites().layerChanged(layer);
    note(layer);
}

void LayerSurface::animationAdded(Layer& layer, const std::string& /*key*/) {
    ticker_.painter().sprites().layerMoved(layer);
    note(layer);
}

void LayerSurface::animationRemoved(Layer& layer, const std::string& /*key*/) {
    ticker_.painter().sprites().layerMoved(layer);
    note(layer);
}

// A mask shows only through what it masks, so that is what changes.
void LayerSurface::note(const Layer& layer) {
    const Layer* seen = &layer;
    while (seen->masked() || seen->superlayer()) {
        if (seen->masked()) {
            seen = seen->masked();
            continue;
        }
        const Layer* up = seen->superlayer();
        const Layer* top = up;
        while (top->superlayer()) {
            top = top->superlayer();
        }
        if (!top->masked()) {
            break;
        }
        seen = top;
    }
    ticker_.wake();
    if (std::find(changed_.begin(), changed_.end(), seen) != changed_.end()) {
        return;
    }
    changed_.push_back(seen);
    dirty(paintedRect(*seen, frameTime_, superlayerTransform(*seen)));
}

QTransform LayerSurface::superlayerTransform(const Layer& layer) const {
    const Layer* up = layer.superlayer();
    return up ? transformOf(*ShownModel(*up, frameTime_), superlayerTransform(*up)) : toCanvas_;
}

void LayerSurface::dirty(const QRectF& rect) {
    if (!rect.isEmpty()) {
        dirty_ += rect.toAlignedRect().adjusted(-1, -1, 1, 1);
    }
}

void LayerSurface::frame(double mediaTime) {
    frameTime_ = mediaTime;
    nextMoving_.clear();
    collect(*root_, toCanvas_);
    for (const Moving& moving : moving_) {
        dirty(moving.rect);
    }
    moving_.swap(nextMoving_);
    changed_.clear();
    if (!dirty_.isEmpty()) {
        repaint_(std::exchange(dirty_, {}));
    }
}

void LayerSurface::collect(const Layer& layer, const QTransform& superlayer) {
    const Layer* mask = layer.mask().get();
    const bool moves = layer.hasAnimations() || (mask && mask->movesUntil(frameTime_));
    if (moves || std::find(changed_.begin(), changed_.end(), &layer) != changed_.end()) {
        if (moves) {
            collectMoving(layer, superlayer);
        } else {
            dirty(paintedRect(layer, frameTime_, superlayer));
        }
        return;
    }
    if (layer.sublayers().empty()) {
        return;
    }
    const QTransform transform = transformOf(layer.model(), superlayer);
    for (const auto& sublayer : layer.sublayers()) {
        collect(*sublayer, transform);
    }
}

// A swing takes long to die away; most of that is too little to see.
void LayerSurface::collectMoving(const Layer& layer, const QTransform& superlayer) {
    const ShownModel model(layer, frameTime_);
    Moving now{.layer = &layer, .transform = transformOf(*model, superlayer), .opacity = model->opacity};
    const auto before =
        std::find_if(moving_.begin(), moving_.end(), [&layer](const Moving& moving) { return moving.layer == &layer; });
    if (before != moving_.end() && std::find(changed_.begin(), changed_.end(), &layer) == changed_.end() &&
        std::abs(now.opacity - before->opacity) < visibleFade && movesAsAWhole(layer) && isStillInside(layer) &&
        !liesApart(now.transform, before->transform, model->bounds)) {
        nextMoving_.push_back(*before);
        moving_.erase(before);
        return;
    }
    now.rect = paintedRect(layer, frameTime_, superlayer);
    dirty(now.rect);
    nextMoving_.push_back(now);
}

} // namespace rb
