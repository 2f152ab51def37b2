#include "desktops/macos/Popover.h"

#include "desktops/macos/Views.h"

#include <utility>

// Tells that the popover has closed.
@interface RBMacPopoverDelegate : NSObject <NSPopoverDelegate>
- (instancetype)initWithDidClose:(std::function<void()>)didClose;
@end

@implementation RBMacPopoverDelegate {
    std::function<void()> _didClose;
}

- (instancetype)initWithDidClose:(std::function<void()>)didClose {
    self = [super init];
    if (self != nil) {
        _didClose = std::move(didClose);
    }
    return self;
}

- (void)popoverDidClose:(NSNotification*)notification {
    const auto didClose = _didClose; // it may end the popover
    if (didClose) {
        didClose();
    }
}

@end

namespace rb {

namespace {

class MacPopover final : public Popover {
public:
    MacPopover(PopoverSpec spec, NSView* below)
        : content_(std::make_unique<ViewNode>(spec.content))
        , delegate_([[RBMacPopoverDelegate alloc] initWithDidClose:std::move(spec.didClose)])
        , popover_([[NSPopover alloc] init]) {
        NSViewController* controller = [[NSViewController alloc] init];
        controller.view = content_->native();
        popover_.contentViewController = controller;
        popover_.behavior = NSPopoverBehaviorTransient;
        popover_.animates = YES;
        popover_.delegate = delegate_;
        [popover_ showRelativeToRect:below.bounds ofView:below preferredEdge:NSRectEdgeMinY];
    }
    ~MacPopover() override {
        popover_.delegate = nil;
        [popover_ close];
    }
    MacPopover(const MacPopover&) = delete;
    MacPopover& operator=(const MacPopover&) = delete;

    void close() override { [popover_ performClose:nil]; }

private:
    std::unique_ptr<ViewNode> content_;
    RBMacPopoverDelegate* delegate_; // the popover refers to it weakly
    NSPopover* popover_;
};

} // namespace

std::unique_ptr<Popover> showMacPopover(PopoverSpec spec, NSView* below) {
    return std::make_unique<MacPopover>(std::move(spec), below);
}

} // namespace rb
