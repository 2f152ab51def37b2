#pragma once

#include "motion/Image.h"

#include <QColor>
#include <QPixmap>
#include <QRectF>
#include <QSizeF>

class QPainter;

namespace rb {

class Symbols;

// The product's images as widgets show them. Main thread only.
class Pictures {
public:
    explicit Pictures(Symbols& symbols)
        : symbols_(symbols) {}

    // In points. `placeSize` is the symbol size that the place calls for, taken by symbols without a size of their
    // own; bitmaps are shown at most `largestBitmap` wide and high. Zero for nothing and for unknown symbols.
    QSizeF size(const Image& image, double placeSize) const;
    // Centred in the area, which bitmaps are scaled down to. The foreground colours symbols without a tint.
    void draw(QPainter& painter, const Image& image, const QRectF& area, double placeSize,
              const QColor& foreground) const;
    // The picture alone, centred in an area of that many points, at a scale of pixels per point.
    QPixmap pixmap(const Image& image, const QSizeF& area, double placeSize, const QColor& foreground,
                   double scale) const;

    static constexpr double largestBitmap = 26;

private:
    Symbols& symbols_;
};

} // namespace rb
