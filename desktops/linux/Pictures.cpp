#include "desktops/linux/Pictures.h"

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/Symbols.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

const LinuxBitmap* bitmapOf(const Image& image) {
    const auto* bitmap = std::get_if<std::shared_ptr<const Bitmap>>(&image);
    return bitmap ? dynamic_cast<const LinuxBitmap*>(bitmap->get()) : nullptr;
}

// Whole pixels, so that edges drawn in the picture stay sharp.
QPointF onPixels(const QPointF& point, double scale) {
    return {std::round(point.x() * scale) / scale, std::round(point.y() * scale) / scale};
}

} // namespace

QSizeF Pictures::size(const Image& image, double placeSize) const {
    if (const auto* symbol = std::get_if<Symbol>(&image)) {
        if (symbol->name.empty() || !symbols_.contains(symbol->name)) {
            return {0, 0};
        }
        const double side = Symbols::sideFor(symbol->pointSize > 0 ? symbol->pointSize : placeSize);
        return {side, side};
    }
    if (const LinuxBitmap* bitmap = bitmapOf(image)) {
        const QSizeF points(bitmap->pointSize().width, bitmap->pointSize().height);
        const QSizeF largest(largestBitmap, largestBitmap);
        return points.width() <= largest.width() && points.height() <= largest.height()
                   ? points
                   : points.scaled(largest, Qt::KeepAspectRatio);
    }
    return {0, 0};
}

void Pictures::draw(QPainter& painter, const Image& image, const QRectF& area, double placeSize,
                    const QColor& foreground) const {
    QSizeF points = size(image, placeSize);
    if (points.isEmpty()) {
        return;
    }
    const double scale = painter.device()->devicePixelRatio();
    if (const auto* symbol = std::get_if<Symbol>(&image)) {
        const int pixels = static_cast<int>(std::lround(points.width() * scale));
        const QImage picture = symbols_.image(*symbol, pixels, foreground);
        const QSizeF shown(pixels / scale, pixels / scale);
        const QPointF corner = area.center() - QPointF(shown.width() / 2, shown.height() / 2);
        painter.drawImage(QRectF(onPixels(corner, scale), shown), picture);
        return;
    }
    const LinuxBitmap& bitmap = *bitmapOf(image);
    if (points.width() > area.width() || points.height() > area.height()) {
        points.scale(area.size(), Qt::KeepAspectRatio);
    }
    const QPointF corner = area.center() - QPointF(points.width() / 2, points.height() / 2);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(onPixels(corner, scale), points), bitmap.halvedTo((points * scale).toSize()));
    painter.restore();
}

QPixmap Pictures::pixmap(const Image& image, const QSizeF& area, double placeSize, const QColor& foreground,
                         double scale) const {
    QPixmap pixmap((area * scale).toSize());
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter, image, QRectF(QPointF(0, 0), area), placeSize, foreground);
    return pixmap;
}

} // namespace rb
