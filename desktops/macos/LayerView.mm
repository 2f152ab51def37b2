#include "desktops/macos/LayerView.h"

#include "desktops/macos/LayerMirror.h"

@implementation RBMacLayerView {
    std::shared_ptr<rb::Layer> _shown;
    std::unique_ptr<rb::LayerMirror> _mirror;
}

- (instancetype)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    if (self != nil) {
        self.wantsLayer = YES;
    }
    return self;
}

- (void)showLayer:(const std::shared_ptr<rb::Layer>&)layer {
    if (layer == _shown) {
        return;
    }
    _mirror = nullptr;
    _shown = layer;
    if (_shown) {
        [self fitLayer];
        _mirror = std::make_unique<rb::LayerMirror>(_shown);
        _mirror->show(self.layer);
    }
}

- (void)flush {
    if (_mirror) {
        _mirror->flush();
    }
}

- (void)setFrameSize:(NSSize)size {
    [super setFrameSize:size];
    [self fitLayer];
}

- (void)fitLayer {
    if (_shown) {
        const NSSize size = self.frame.size;
        _shown->change().setFrame({0, 0, size.width, size.height});
    }
}

@end
