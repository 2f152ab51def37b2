#pragma once

#include "motion/Layer.h"

#import <QuartzCore/QuartzCore.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

@class RBMacAnimationEnd;
@class RBMacLayerFlush;

namespace rb {

// A tree of layers shown as CALayers, one for each, while this lives. Changes are collected and carried over when Core
// Animation lays its tree out at the end of the turn, in the same transaction in which it commits: by then the product
// has finished writing, and nothing half-written is ever shown. Core Animation runs the animations; their ends come
// back through Layer::endAnimation. Main thread only.
class LayerMirror final : public LayerHost {
public:
    explicit LayerMirror(std::shared_ptr<Layer> root);
    ~LayerMirror() override;
    LayerMirror(const LayerMirror&) = delete;
    LayerMirror& operator=(const LayerMirror&) = delete;

    // Into the layer of a view; complete from the beginning. Destruction takes it out again.
    void show(CALayer* container);
    CALayer* nativeRoot() const { return nativeRoot_; }
    // Carries over what changed; for those who can't wait for the end of the turn.
    void flush();

    double mediaTime() const override;
    void layerChanged(Layer& layer) override;
    void animationAdded(Layer& layer, const std::string& key) override;
    void animationRemoved(Layer& layer, const std::string& key) override;

    // The running animations of one layer by key. The end of any other is no news: it was replaced or removed.
    using AnimationEnds = std::map<std::string, RBMacAnimationEnd*>;

private:
    struct Mirrored {
        std::weak_ptr<Layer> layer;
        CALayer* native = nil;
        std::shared_ptr<AnimationEnds> ends = std::make_shared<AnimationEnds>();
    };
    using Added = std::pair<const Layer*, std::string>;

    CALayer* carryOver(const std::shared_ptr<Layer>& layer);
    void addAnimation(const std::shared_ptr<Layer>& layer, Mirrored& mirrored, const std::string& key,
                      std::optional<double> begin) const;
    void dropGone();
    void requestFlush();

    std::shared_ptr<Layer> root_;
    // A plain layer above the root's, which must be free to be replaced.
    CALayer* nativeRoot_;
    RBMacLayerFlush* flushRequests_; // Core Animation refers to it weakly
    std::map<const Layer*, Mirrored> mirrored_;
    std::set<const Layer*> changed_;
    std::vector<Added> added_;
};

} // namespace rb
