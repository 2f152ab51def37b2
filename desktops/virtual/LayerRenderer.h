#pragma once

#include "desktops/virtual/Bitmap.h"
#include "platform/LayerRenderer.h"

#include <functional>

namespace rb {

// Pictures of layers without pixels. A test may look at the layer at the moment it is drawn.
class VirtualLayerRenderer final : public LayerRenderer {
public:
    std::shared_ptr<const Bitmap> render(const Layer& layer, double scale) override {
        if (onRender) {
            onRender(layer);
        }
        const Size size = layer.model().bounds.size();
        if (size.width <= 0 || size.height <= 0) {
            return nullptr;
        }
        return std::make_shared<VirtualBitmap>("layer", Size{size.width * scale, size.height * scale});
    }

    std::function<void(const Layer&)> onRender;
};

} // namespace rb
