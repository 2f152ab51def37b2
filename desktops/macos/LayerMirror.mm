#include "desktops/macos/LayerMirror.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/LayerProperties.h"

#include <algorithm>

// Told by Core Animation that one animation stopped.
@interface RBMacAnimationEnd : NSObject <CAAnimationDelegate>
- (instancetype)initWithLayer:(std::weak_ptr<rb::Layer>)layer
                          key:(std::string)key
                         ends:(std::weak_ptr<rb::LayerMirror::AnimationEnds>)ends;
@end

@implementation RBMacAnimationEnd {
    std::weak_ptr<rb::Layer> _layer;
    std::string _key;
    std::weak_ptr<rb::LayerMirror::AnimationEnds> _ends;
}

- (instancetype)initWithLayer:(std::weak_ptr<rb::Layer>)layer
                          key:(std::string)key
                         ends:(std::weak_ptr<rb::LayerMirror::AnimationEnds>)ends {
    self = [super init];
    if (self != nil) {
        _layer = std::move(layer);
        _key = std::move(key);
        _ends = std::move(ends);
    }
    return self;
}

- (void)animationDidStop:(CAAnimation*)animation finished:(BOOL)finished {
    const auto ends = _ends.lock();
    const auto layer = _layer.lock();
    if (!ends || !layer) {
        return;
    }
    const auto own = ends->find(_key);
    if (own == ends->end() || own->second != self) {
        return;
    }
    RBMacAnimationEnd* kept = self; // the map may hold the last reference but this
    ends->erase(own);
    layer->endAnimation(kept->_key, finished != NO);
}

@end

// The delegate of the uppermost layer: a layout request is how a flush is asked for.
@interface RBMacLayerFlush : NSObject <CALayerDelegate>
// Null once the mirror is gone.
@property(nonatomic) rb::LayerMirror* mirror;
@end

@implementation RBMacLayerFlush

- (void)layoutSublayersOfLayer:(CALayer*)layer {
    if (self.mirror != nullptr) {
        self.mirror->flush();
    }
}

@end

namespace rb {

namespace {

// Changes of layers never animate by themselves.
class QuietTransaction {
public:
    QuietTransaction() {
        [CATransaction begin];
        [CATransaction setDisableActions:YES];
    }
    ~QuietTransaction() { [CATransaction commit]; }
    QuietTransaction(const QuietTransaction&) = delete;
    QuietTransaction& operator=(const QuietTransaction&) = delete;
};

} // namespace

LayerMirror::LayerMirror(std::shared_ptr<Layer> root)
    : root_(std::move(root))
    , nativeRoot_([CALayer layer])
    , flushRequests_([[RBMacLayerFlush alloc] init]) {
    flushRequests_.mirror = this;
    nativeRoot_.delegate = flushRequests_;
    root_->setHost(this);
    flush();
}

LayerMirror::~LayerMirror() {
    const QuietTransaction transaction;
    root_->setHost(nullptr);
    flushRequests_.mirror = nullptr;
    nativeRoot_.delegate = nil;
    [nativeRoot_ removeFromSuperlayer];
}

void LayerMirror::show(CALayer* container) {
    const QuietTransaction transaction;
    [container addSublayer:nativeRoot_];
}

double LayerMirror::mediaTime() const {
    return CACurrentMediaTime();
}

void LayerMirror::layerChanged(Layer& layer) {
    dropGone(); // before this layer may take one of them in again
    changed_.insert(&layer);
    requestFlush();
}

void LayerMirror::animationAdded(Layer& layer, const std::string& key) {
    added_.emplace_back(&layer, key);
    requestFlush();
}

void LayerMirror::animationRemoved(Layer& layer, const std::string& key) {
    std::erase(added_, Added(&layer, key));
    const auto found = mirrored_.find(&layer);
    if (found != mirrored_.end()) {
        found->second.ends->erase(key);
        [found->second.native removeAnimationForKey:nsString(key)];
    }
}

void LayerMirror::requestFlush() {
    [nativeRoot_ setNeedsLayout];
}

void LayerMirror::flush() {
    const QuietTransaction transaction;
    CALayer* top = carryOver(root_);
    if (![nativeRoot_.sublayers isEqualToArray:@[ top ]]) {
        nativeRoot_.sublayers = @[ top ];
    }
    dropGone();
    changed_.clear();
    added_.clear();
}

// Walks the tree from the root, so that it never meets a layer that has gone since it was noted as changed.
CALayer* LayerMirror::carryOver(const std::shared_ptr<Layer>& layer) {
    const LayerModel& model = layer->model();
    Mirrored& mirrored = mirrored_[layer.get()];
    mirrored.layer = layer;
    const bool isNew = mirrored.native == nil || ![mirrored.native isMemberOfClass:nativeClass(model.content)];
    if (isNew) {
        mirrored.native = [nativeClass(model.content) layer];
        mirrored.ends->clear();
    }
    if (isNew || changed_.contains(layer.get())) {
        setProperties(mirrored.native, model);
    }
    CALayer* mask = layer->mask() ? carryOver(layer->mask()) : nil;
    if (mirrored.native.mask != mask) {
        mirrored.native.mask = mask;
    }

    NSMutableArray<CALayer*>* sublayers = [NSMutableArray array];
    for (const auto& sublayer : layer->sublayers()) {
        CALayer* native = carryOver(sublayer);
        if (native.superlayer != mirrored.native) {
            [native removeFromSuperlayer]; // only layers that hang nowhere else can be set as sublayers
        }
        [sublayers addObject:native];
    }
    if (sublayers.count + mirrored.native.sublayers.count > 0 &&
        ![sublayers isEqualToArray:mirrored.native.sublayers]) {
        mirrored.native.sublayers = sublayers;
    }

    for (const std::string& key : layer->animationKeys()) {
        if (isNew) {
            // It may have begun long ago, before the tree was taken off and shown again.
            addAnimation(layer, mirrored, key, layer->animationBegin(key));
        } else if (std::find(added_.begin(), added_.end(), Added(layer.get(), key)) != added_.end()) {
            addAnimation(layer, mirrored, key, layer->animation(key)->beginTime);
        }
    }
    return mirrored.native;
}

void LayerMirror::addAnimation(const std::shared_ptr<Layer>& layer, Mirrored& mirrored, const std::string& key,
                               std::optional<double> begin) const {
    CAAnimation* animation = nativeAnimation(*layer->animation(key), begin, mirrored.native);
    RBMacAnimationEnd* end = [[RBMacAnimationEnd alloc] initWithLayer:layer key:key ends:mirrored.ends];
    animation.delegate = end;
    // First, because adding it makes Core Animation stop the one that it replaces.
    mirrored.ends->insert_or_assign(key, end);
    [mirrored.native addAnimation:animation forKey:nsString(key)];
}

// Those that left the tree. One that comes back begins anew, because nobody told what happened to it meanwhile; and
// another one may come to lie at the address of one that died.
void LayerMirror::dropGone() {
    std::erase_if(mirrored_, [this](const auto& entry) {
        const auto layer = entry.second.layer.lock();
        return !layer || layer->host() != this;
    });
}

} // namespace rb
