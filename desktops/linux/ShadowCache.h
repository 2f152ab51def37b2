#pragma once

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QRectF>
#include <vector>

namespace rb {

// What throws a shadow: a filled outline, its stroke (when the width is positive), or a picture's alpha (when there
// is one) in a rectangle. In layer coordinates.
struct ShadowCaster {
    QPainterPath path = {};
    double strokeWidth = 0;
    Qt::PenCapStyle cap = Qt::FlatCap;
    QImage picture = {};
    QRectF pictureRect = {};

    QRectF boundingRect() const;
    bool sameAs(const ShadowCaster& other) const;
};

// Blurred silhouettes, kept for as long as they are used now and then. A soft shadow has no detail, so it is stored
// coarsely and drawn enlarged. Main thread only.
class ShadowCache {
public:
    struct Shadow {
        QImage image; // rows upwards, like layer coordinates
        QRectF rect;  // where it lies, in layer coordinates, before the shadow's offset
    };
    // The radius is the standard deviation of the blur, in points. Valid until the next call.
    const Shadow& shadow(const ShadowCaster& caster, double radius, const QColor& color, double pixelsPerPoint);

    // How many shadows were blurred so far: what a repaint with unchanged shadows must not increase.
    unsigned long blurred() const { return blurred_; }

private:
    struct Entry {
        ShadowCaster caster;
        double radius = 0;
        double pixelsPerPoint = 0;
        QRgb color = 0;
        Shadow shadow;
    };
    std::vector<Entry> entries_; // the least recently used one first
    unsigned long blurred_ = 0;
};

} // namespace rb
