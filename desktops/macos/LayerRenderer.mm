#include "desktops/macos/LayerRenderer.h"

#include "desktops/macos/Bitmap.h"
#include "desktops/macos/LayerProperties.h"

#include <cmath>

namespace rb {

namespace {

CALayer* nativeCopy(const Layer& layer) {
    CALayer* native = [nativeClass(layer.model().content) layer];
    setProperties(native, layer.model());
    // Texts and shapes draw their contents when they are shown, and this copy never is.
    [native displayIfNeeded];
    if (layer.mask()) {
        native.mask = nativeCopy(*layer.mask());
    }
    for (const auto& sublayer : layer.sublayers()) {
        [native addSublayer:nativeCopy(*sublayer)];
    }
    return native;
}

} // namespace

std::shared_ptr<const Bitmap> MacLayerRenderer::render(const Layer& layer, double scale) {
    const Rect bounds = layer.model().bounds;
    const Size size = bounds.size();
    const auto width = static_cast<size_t>(std::ceil(std::fmax(0, size.width * scale)));
    const auto height = static_cast<size_t>(std::ceil(std::fmax(0, size.height * scale)));
    if (width == 0 || height == 0) {
        return nullptr;
    }
    CGColorSpaceRef space = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
    CGContextRef context = CGBitmapContextCreate(nullptr, width, height, 8, 0, space,
                                                 static_cast<uint32_t>(kCGImageAlphaPremultipliedLast));
    CGColorSpaceRelease(space);
    if (context == nullptr) {
        return nullptr;
    }
    CGContextScaleCTM(context, scale, scale);
    CGContextTranslateCTM(context, -bounds.x, -bounds.y);
    // Rendering draws in the layer's own coordinates: its position, transform and opacity take no part.
    [nativeCopy(layer) renderInContext:context];
    CGImageRef image = CGBitmapContextCreateImage(context);
    CGContextRelease(context);
    if (image == nullptr) {
        return nullptr;
    }
    auto bitmap = std::make_shared<const MacBitmap>(image);
    CGImageRelease(image);
    return bitmap;
}

} // namespace rb
