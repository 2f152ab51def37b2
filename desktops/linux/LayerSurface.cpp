#include "desktops/linux/LayerSurface.h"

#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/LayerPainter.h"
#include "platform/RunLoop.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <utility>

namespace rb {

namespace {

double frameInterval() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double rate = screen ? screen->refreshRate() : 60;
    return 1 / std::clamp(rate, 30.0, 60.0);
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
    ticker_.remove(*this);
    root_->setHost(nullptr);
    changed_.clear();
    moving_.clear();
    dirty_ = {};
}

void LayerSurface::paint(QPainter& painter, const QRectF& area) {
    ticker_.painter().paint(painter, *root_, frameTime_, toCanvas_, area);
}

double LayerSurface::mediaTime() const {
    return ticker_.loop().now();
}

void LayerSurface::layerChanged(Layer& layer) {
    note(layer);
}

void LayerSurface::animationAdded(Layer& layer, const std::string& /*key*/) {
    note(layer);
}

void LayerSurface::animationRemoved(Layer& layer, const std::string& /*key*/) {
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
    for (const Moving& moving : moving_) {
        dirty(moving.rect);
    }
    nextMoving_.clear();
    collect(*root_, toCanvas_);
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
        const QRectF rect = paintedRect(layer, frameTime_, superlayer);
        dirty(rect);
        if (moves) {
            nextMoving_.push_back({&layer, rect});
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

} // namespace rb
