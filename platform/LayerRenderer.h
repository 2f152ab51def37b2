#pragma once

#include "motion/Layer.h"

#include <memory>

namespace rb {

// Draws layers into pictures. Main thread only.
class LayerRenderer {
public:
    virtual ~LayerRenderer() = default;
    // The layer's bounds with everything in it, as it is now, at `scale` pixels per point; its own position, transform
    // and opacity are left out. Null for a layer without size.
    virtual std::shared_ptr<const Bitmap> render(const Layer& layer, double scale) = 0;
};

} // namespace rb
