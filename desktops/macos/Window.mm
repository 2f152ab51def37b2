#include "desktops/macos/Window.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/Views.h"

#import <QuartzCore/QuartzCore.h>

#include <algorithm>
#include <memory>
#include <utility>

// Tells that the user closed the window.
@interface RBMacWindowDelegate : NSObject <NSWindowDelegate>
- (instancetype)initWithWillClose:(std::function<void()>)willClose;
@end

@implementation RBMacWindowDelegate {
    std::function<void()> _willClose;
}

- (instancetype)initWithWillClose:(std::function<void()>)willClose {
    self = [super init];
    if (self != nil) {
        _willClose = std::move(willClose);
    }
    return self;
}

- (void)windowWillClose:(NSNotification*)notification {
    const auto willClose = _willClose; // it may destroy the window
    if (willClose) {
        willClose();
    }
}

@end

namespace rb {

namespace {

NSWindowStyleMask styleMask(const WindowSpec& spec) {
    NSWindowStyleMask mask = NSWindowStyleMaskTitled;
    mask |= spec.closable ? NSWindowStyleMaskClosable : 0;
    mask |= spec.resizable ? NSWindowStyleMaskResizable : 0;
    mask |= spec.miniaturizable ? NSWindowStyleMaskMiniaturizable : 0;
    return mask;
}

class MacWindow final : public Window {
public:
    explicit MacWindow(const WindowSpec& spec);
    ~MacWindow() override;
    MacWindow(const MacWindow&) = delete;
    MacWindow& operator=(const MacWindow&) = delete;

    void setContent(View content) override;
    void center() override { [window_ center]; }
    void makeKeyAndOrderFront() override { [window_ makeKeyAndOrderFront:nil]; }
    void orderOut() override { [window_ orderOut:nil]; }
    bool isVisible() const override { return window_.visible != NO; }
    bool makeFirstResponder(const std::string& identifier) override;
    Rect frame() const override { return rectFrom(window_.frame); }
    void setFrame(const Rect& frame) override { [window_ setFrame:cgRect(frame) display:YES]; }
    void orderFront() override { [window_ orderFront:nil]; }
    bool isMiniaturized() const override { return window_.miniaturized != NO; }
    bool isKeyWindow() const override { return window_.keyWindow != NO; }
    Handle beginSheet(const Alert& alert, std::function<void(std::size_t button)> answer) override;
    double scrollOffset(const std::string& identifier) const override;
    void setScrollOffset(const std::string& identifier, double offset) override;
    void reveal(const std::string& stackIdentifier, const Reveal& reveal) override;

private:
    NSWindow* window_;
    RBMacWindowDelegate* delegate_; // the window refers to it weakly
    std::unique_ptr<ViewNode> content_;
};

MacWindow::MacWindow(const WindowSpec& spec)
    : window_([[NSWindow alloc] initWithContentRect:cgRect({0, 0, spec.contentSize.width, spec.contentSize.height})
                                          styleMask:styleMask(spec)
                                            backing:NSBackingStoreBuffered
                                              defer:NO])
    , delegate_([[RBMacWindowDelegate alloc] initWithWillClose:spec.willClose]) {
    window_.title = nsString(spec.title);
    window_.titlebarAppearsTransparent = spec.transparentTitleBar ? YES : NO;
    if (spec.minimumSize) {
        window_.contentMinSize = cgSize(*spec.minimumSize);
    }
    if (spec.dark) {
        window_.appearance = [NSAppearance appearanceNamed:NSAppearanceNameDarkAqua];
    }
    if (spec.translucent) {
        NSVisualEffectView* background = [[NSVisualEffectView alloc] initWithFrame:window_.contentView.frame];
        background.material = NSVisualEffectMaterialUnderWindowBackground;
        background.blendingMode = NSVisualEffectBlendingModeBehindWindow;
        background.state = NSVisualEffectStateActive;
        window_.contentView = background;
    }
    window_.releasedWhenClosed = NO;
    window_.delegate = delegate_;
}

MacWindow::~MacWindow() {
    window_.delegate = nil;
    [window_ orderOut:nil];
    [content_ ? content_->native() : nil removeFromSuperview];
}

void MacWindow::setContent(View content) {
    if (!ViewNode::render(content_, content)) {
        return;
    }
    NSView* root = content_->native();
    NSView* frame = window_.contentView;
    [frame addSubview:root];
    [NSLayoutConstraint activateConstraints:@[
        [root.leadingAnchor constraintEqualToAnchor:frame.leadingAnchor],
        [root.trailingAnchor constraintEqualToAnchor:frame.trailingAnchor],
        [root.topAnchor constraintEqualToAnchor:frame.topAnchor],
        [root.bottomAnchor constraintEqualToAnchor:frame.bottomAnchor]
    ]];
}

bool MacWindow::makeFirstResponder(const std::string& identifier) {
    const ViewNode* node = content_ ? content_->find(identifier) : nullptr;
    NSView* view = node != nullptr ? node->native() : nil;
    if (view == nil || !view.acceptsFirstResponder) {
        return false;
    }
    return [window_ makeFirstResponder:view] != NO;
}

Handle MacWindow::beginSheet(const Alert& alert, std::function<void(std::size_t button)> answer) {
    NSAlert* native = [[NSAlert alloc] init];
    native.messageText = nsString(alert.messageText);
    native.informativeText = nsString(alert.informativeText);
    for (const AlertButton& button : alert.buttons) {
        [native addButtonWithTitle:nsString(button.title)];
    }
    const std::size_t last = std::max<std::size_t>(alert.buttons.size(), 1) - 1;
    const auto waiting = std::make_shared<std::function<void(std::size_t)>>(std::move(answer));
    [native beginSheetModalForWindow:window_
                   completionHandler:^(NSModalResponse response) {
                       const NSInteger index = response - NSAlertFirstButtonReturn;
                       const bool chosen = index >= 0 && static_cast<std::size_t>(index) <= last;
                       // Taken away without an answer it has none to tell.
                       if (const auto tell = std::exchange(*waiting, nullptr)) {
                           tell(chosen ? static_cast<std::size_t>(index) : last);
                       }
                   }];
    __weak NSWindow* parent = window_;
    NSWindow* sheet = native.window;
    return Handle([waiting, parent, sheet] {
        if (std::exchange(*waiting, nullptr)) {
            [parent endSheet:sheet];
        }
    });
}

double MacWindow::scrollOffset(const std::string& identifier) const {
    const ViewNode* node = content_ ? content_->find(identifier) : nullptr;
    NSScrollView* scroll = node != nullptr ? node->scrollView() : nil;
    return scroll != nil ? scroll.contentView.bounds.origin.y : 0;
}

void MacWindow::setScrollOffset(const std::string& identifier, double offset) {
    const ViewNode* node = content_ ? content_->find(identifier) : nullptr;
    NSScrollView* scroll = node != nullptr ? node->scrollView() : nil;
    [scroll.contentView scrollToPoint:CGPointMake(0, offset)];
    [scroll reflectScrolledClipView:scroll.contentView];
}

void MacWindow::reveal(const std::string& stackIdentifier, const Reveal& reveal) {
    const ViewNode* stack = content_ ? content_->find(stackIdentifier) : nullptr;
    if (stack == nullptr) {
        return;
    }
    std::size_t index = 0;
    for (const auto& child : stack->children()) {
        NSView* view = child->native();
        view.wantsLayer = YES;
        CABasicAnimation* fade = [CABasicAnimation animationWithKeyPath:@"opacity"];
        fade.fromValue = @0.0;
        fade.toValue = @1.0;
        CABasicAnimation* slide = [CABasicAnimation animationWithKeyPath:@"transform.translation.y"];
        slide.fromValue = @(reveal.slide);
        slide.toValue = @0.0;
        CAAnimationGroup* entrance = [CAAnimationGroup animation];
        entrance.animations = @[ fade, slide ];
        entrance.duration = reveal.duration;
        entrance.timingFunction = [CAMediaTimingFunction functionWithControlPoints:0.2f:0.9f:0.25f:1.0f];
        entrance.fillMode = kCAFillModeBackwards;
        entrance.beginTime = CACurrentMediaTime() + reveal.delay * static_cast<double>(std::min(index, reveal.last));
        [view.layer addAnimation:entrance forKey:@"rb.reveal"];
        ++index;
    }
}

} // namespace

bool MacWindows::isApplicationActive() const {
    return NSApp.active != NO;
}

bool MacWindows::hasKeyWindow() const {
    return NSApp.keyWindow != nil;
}

std::unique_ptr<Window> MacWindows::createWindow(const WindowSpec& spec) {
    return std::make_unique<MacWindow>(spec);
}

} // namespace rb
