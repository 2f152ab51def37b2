#pragma once

#include "motion/Geometry.h"

#include <QPointF>
#include <QRectF>

namespace rb {

// Between Qt's coordinates (device-independent pixels, y downwards) and the product's (points, origin at the bottom
// left of the primary screen, y upwards). Both have the same unit. Read the primary screen anew for each use: it
// changes with the screens.
class ScreenSpace {
public:
    // The primary screen as it is now; an empty one at the origin when there is no screen.
    static ScreenSpace current();
    explicit ScreenSpace(const QRect& primary)
        : left_(primary.left())
        , bottom_(primary.top() + primary.height()) {}

    // The row of pixels `y` lies between two lines; its point is on the upper one, as macOS reports the pointer.
    Point fromQt(QPointF point) const { return {point.x() - left_, bottom_ - point.y()}; }
    Rect fromQt(const QRectF& rect) const {
        return {rect.x() - left_, bottom_ - rect.y() - rect.height(), rect.width(), rect.height()};
    }
    QPointF toQt(Point point) const { return {point.x + left_, bottom_ - point.y}; }
    QRectF toQt(const Rect& rect) const { return {rect.x + left_, bottom_ - rect.maxY(), rect.width, rect.height}; }

private:
    double left_;
    double bottom_;
};

} // namespace rb
