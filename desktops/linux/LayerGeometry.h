#pragma once

#include "motion/Layer.h"

#include <QPainterPath>
#include <QRectF>
#include <QTransform>
#include <optional>

// Where layers lie and what they cover, in Qt's geometry. Coordinates of layers grow upwards; a "canvas" is what a
// painter's logical coordinates are, growing downwards. Plain functions.
namespace rb {

// What a layer looks like at a media time, without a copy while it doesn't move.
class ShownModel {
public:
    ShownModel(const Layer& layer, double mediaTime);
    ShownModel(const ShownModel&) = delete;
    ShownModel& operator=(const ShownModel&) = delete;
    const LayerModel& operator*() const { return moving_ ? *moving_ : still_; }
    const LayerModel* operator->() const { return &**this; }

private:
    const LayerModel& still_;
    std::optional<LayerModel> moving_;
};

QRectF toQt(const Rect& rect);
QPainterPath toQt(const Path& path);

// From panel coordinates (origin bottom left) to a canvas whose rectangle that is.
QTransform flipped(const QRectF& canvasRect);
// From the layer's own coordinates to the canvas, given how its superlayer's get there.
QTransform transformOf(const LayerModel& model, const QTransform& superlayer);

// The outline of a rounded rectangle. Continuous corners begin earlier and bend more gently than circles.
QPainterPath outlineOf(const QRectF& rect, double radius, bool continuous);
inline QPainterPath outlineOf(const LayerModel& model) {
    return outlineOf(toQt(model.bounds), model.cornerRadius, model.continuousCorners);
}

// Whether the layer's own animations only shift, turn and fade it.
bool movesAsAWhole(const Layer& layer);
// Whether nothing is animated below the layer, its mask included.
bool isStillInside(const Layer& layer);

// Where the contents lie in layer coordinates, from their size in points and their gravity.
QRectF contentsRect(const LayerModel& model, const QSizeF& size);
// The size in points of what the layer shows; empty for nothing.
QSizeF contentsSize(const LayerModel& model);

// How far a shadow reaches beyond what throws it, in points.
double shadowReach(double radius);

// The canvas rectangle that a layer, its sublayers and their shadows can touch; empty when nothing shows.
QRectF paintedRect(const Layer& layer, double mediaTime, const QTransform& superlayer);
// The same without the sublayers.
QRectF ownPaintedRect(const LayerModel& model, const QTransform& transform);

} // namespace rb
