#pragma once

#include "motion/Layer.h"
#include "platform/Handle.h"

#include <QRectF>
#include <QRegion>
#include <QTransform>
#include <functional>
#include <memory>
#include <vector>

class QPainter;

namespace rb {

class LayerPainter;
class LayerSurface;
class RunLoop;

// The one ticker behind everything that moves: it runs at the screens' pace while an animation is under way, and
// not at all otherwise. Changes without an animation are shown in the next turn of the run loop. Main thread only.
class LayerTicker {
public:
    // Both outlive it.
    LayerTicker(RunLoop& loop, LayerPainter& painter)
        : loop_(loop)
        , painter_(painter) {}
    LayerTicker(const LayerTicker&) = delete;
    LayerTicker& operator=(const LayerTicker&) = delete;

    RunLoop& loop() const { return loop_; }
    LayerPainter& painter() const { return painter_; }
    bool isTicking() const { return static_cast<bool>(timer_); }

private:
    friend class LayerSurface;
    void add(LayerSurface& surface);
    void remove(LayerSurface& surface);
    void wake();
    void tick();

    RunLoop& loop_;
    LayerPainter& painter_;
    std::vector<LayerSurface*> surfaces_;
    Handle timer_;
    bool woken_ = false;
    Lifetime lifetime_;
};

// A place on the screen that shows a tree of layers: runs its animations and asks for repaints of exactly what
// changed. Main thread only.
class LayerSurface final : public LayerHost {
public:
    // `repaint` is given what changed, in canvas coordinates, and paints it (at once or later) with paint().
    LayerSurface(LayerTicker& ticker, std::shared_ptr<Layer> root, std::function<void(const QRegion&)> repaint);
    ~LayerSurface() override;
    LayerSurface(const LayerSurface&) = delete;
    LayerSurface& operator=(const LayerSurface&) = delete;

    const std::shared_ptr<Layer>& root() const { return root_; }
    // From the coordinates in which the root is placed to the canvas. The caller repaints.
    void setTransform(const QTransform& toCanvas) { toCanvas_ = toCanvas; }
    const QTransform& transform() const { return toCanvas_; }

    // The tree is on the screen, or off it; off the screen its animations keep their time and nothing is painted.
    void show();
    void hide();
    bool isShown() const { return shown_; }

    // The tree as it looks at the time of the last frame.
    void paint(QPainter& painter, const QRectF& area);
    // The same, faster, where the painter is clipped to that region and to nothing else.
    void paintRegion(QPainter& painter, const QRegion& region);
    double frameTime() const { return frameTime_; }

    double mediaTime() const override;
    void layerChanged(Layer& layer) override;
    void animationAdded(Layer& layer, const std::string& key) override;
    void animationRemoved(Layer& layer, const std::string& key) override;

private:
    friend class LayerTicker;
    struct Moving {
        const Layer* layer; // only compared, never followed: it may be gone
        QRectF rect = {};
        QTransform transform = {};
        double opacity = 0;
    };
    // Looks at the tree anew and has what changed since the last frame repainted.
    void frame(double mediaTime);
    void collect(const Layer& layer, const QTransform& superlayer);
    void collectMoving(const Layer& layer, const QTransform& superlayer);
    void note(const Layer& layer);
    void dirty(const QRectF& rect);
    QTransform superlayerTransform(const Layer& layer) const;

    LayerTicker& ticker_;
    std::shared_ptr<Layer> root_;
    std::function<void(const QRegion&)> repaint_;
    QTransform toCanvas_;
    bool shown_ = false;
    double frameTime_ = 0;
    std::vector<const Layer*> changed_; // since the last frame; only compared
    std::vector<Moving> moving_;        // with where they were last painted
    std::vector<Moving> nextMoving_;
    QRegion dirty_;
};

} // namespace rb
