#include "desktops/macos/Window.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/Views.h"

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

} // namespace

std::unique_ptr<Window> MacWindows::createWindow(const WindowSpec& spec) {
    return std::make_unique<MacWindow>(spec);
}

} // namespace rb
