#pragma once

#include "platform/LayerRenderer.h"

namespace rb {

class LayerPainter;

// Layers painted into pictures by the painter that also paints the panels.
class LinuxLayerRenderer final : public LayerRenderer {
public:
    // The painter outlives it.
    explicit LinuxLayerRenderer(LayerPainter& painter)
        : painter_(painter) {}

    std::shared_ptr<const Bitmap> render(const Layer& layer, double scale) override;

private:
    LayerPainter& painter_;
};

} // namespace rb
