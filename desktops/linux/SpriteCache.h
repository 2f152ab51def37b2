#pragma once

#include "motion/Layer.h"

#include <QImage>
#include <QRectF>
#include <memory>
#include <vector>

namespace rb {

// Pictures of layers that are moved as a whole, each with everything below it, for as long as nothing in it changes.
// The layers are followed weakly. Main thread only.
class SpriteCache {
public:
    struct Sprite {
        QImage image; // with a transparent edge of a pixel
        QRectF rect;  // what it covers, in the layer's own coordinates, which grow upwards
    };

    // Null when there is none of that layer at that scale. Valid until the next call.
    const Sprite* find(const Layer& layer, double pixelsPerPoint);
    const Sprite& keep(const std::shared_ptr<const Layer>& layer, double pixelsPerPoint, Sprite sprite);

    // The layer is about to change: all that show it, and its own picture unless it turns out to be merely in another
    // place when it is looked for.
    void layerChanged(const Layer& layer);
    // The layer moves differently: all that show it, but not its own picture.
    void layerMoved(const Layer& layer);
    // The tree went off the screen.
    void forgetTree(const Layer& root);

    // How many were made so far: what a moving layer must not increase.
    unsigned long made() const { return made_; }

private:
    struct Entry {
        std::weak_ptr<const Layer> layer;
        double pixelsPerPoint = 0;
        Sprite sprite;
        // What it was made of, to know whether the layer still looks so.
        LayerModel look;
        std::vector<std::weak_ptr<const Layer>> parts;
        bool doubtful = false;
    };
    static bool looksSo(const Layer& layer, const Entry& entry);

    std::vector<Entry> entries_;
    unsigned long made_ = 0;
};

} // namespace rb
