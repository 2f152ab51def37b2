#pragma once

#include "platform/LayerRenderer.h"

namespace rb {

// Draws a native copy of the layer's tree, without its animations, into a bitmap context.
class MacLayerRenderer final : public LayerRenderer {
public:
    std::shared_ptr<const Bitmap> render(const Layer& layer, double scale) override;
};

} // namespace rb
