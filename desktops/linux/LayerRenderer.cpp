#include "desktops/linux/LayerRenderer.h"

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/LayerPainter.h"

#include <QPainter>
#include <cmath>
#include <memory>

namespace rb {

std::shared_ptr<const Bitmap> LinuxLayerRenderer::render(const Layer& layer, double scale) {
    const Rect bounds = layer.model().bounds;
    const QSize pixels(static_cast<int>(std::ceil(bounds.width * scale)),
                       static_cast<int>(std::ceil(bounds.height * scale)));
    if (pixels.isEmpty()) {
        return nullptr;
    }
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setDevicePixelRatio(scale);
    QPainter painter(&image);
    // Undoes the layer's own place and turn, so that its bounds fill the picture.
    const double now = layer.host() ? layer.host()->mediaTime() : 0;
    const QTransform place = transformOf(layer.presentation(now), {});
    const QRectF canvas(0, 0, bounds.width, bounds.height);
    painter_.paint(painter, layer, now, place.inverted() * flipped(canvas), canvas);
    painter.end();
    image.setDevicePixelRatio(1);
    return std::make_shared<LinuxBitmap>(image);
}

} // namespace rb
