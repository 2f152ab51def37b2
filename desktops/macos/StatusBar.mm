#include "desktops/macos/StatusBar.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/Menus.h"
#include "desktops/macos/Popover.h"

#import <QuartzCore/QuartzCore.h>

#include <utility>

// Receives the clicks of a status item's button, which refers to it weakly.
@interface RBMacStatusItemTarget : NSObject
- (void)setAction:(std::function<void(const rb::StatusItemClick&)>)action;
- (void)clicked:(id)sender;
@end

@implementation RBMacStatusItemTarget {
    std::function<void(const rb::StatusItemClick&)> _action;
}

- (void)setAction:(std::function<void(const rb::StatusItemClick&)>)action {
    _action = std::move(action);
}

- (void)clicked:(id)sender {
    NSEvent* event = NSApp.currentEvent;
    const rb::StatusItemClick click{.rightButton = event.type == NSEventTypeRightMouseUp,
                                    .modifierFlags = static_cast<std::uint32_t>(event.modifierFlags)};
    const auto action = _action; // it may take the item away
    if (action) {
        action(click);
    }
}

@end

namespace rb {

namespace {

class MacStatusItem final : public StatusItem {
public:
    MacStatusItem()
        : item_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]) {}
    ~MacStatusItem() override {
        [target_ setAction:nullptr]; // the system may keep the button a little longer
        [NSStatusBar.systemStatusBar removeStatusItem:item_];
    }
    MacStatusItem(const MacStatusItem&) = delete;
    MacStatusItem& operator=(const MacStatusItem&) = delete;

    void setImage(const Image& image) override { item_.button.image = nsImage(image); }
    void setToolTip(const std::string& toolTip) override { item_.button.toolTip = nsString(toolTip); }
    void setMenu(std::shared_ptr<Menu> menu) override { item_.menu = nsMenu(menu); }
    void setLength(double length) override { item_.length = length; }
    void setAutosaveName(const std::string& name) override { item_.autosaveName = nsString(name); }
    void setVisible(bool visible) override { item_.visible = visible ? YES : NO; }
    bool isVisible() const override { return item_.visible != NO; }
    void setAction(std::function<void(const StatusItemClick& click)> action) override;
    void popUpMenu(std::shared_ptr<Menu> menu) override;
    void setLayerBacked(bool layerBacked) override { item_.button.wantsLayer = layerBacked ? YES : NO; }
    void addTransition(const std::string& key, const PushTransition& transition) override;
    std::optional<Rect> frame() const override;
    std::unique_ptr<Popover> showPopover(PopoverSpec spec) override;

private:
    NSStatusItem* item_;
    RBMacStatusItemTarget* target_ = nil;
};

void MacStatusItem::setAction(std::function<void(const StatusItemClick& click)> action) {
    if (target_ == nil) {
        target_ = [[RBMacStatusItemTarget alloc] init];
        item_.button.target = target_;
        item_.button.action = @selector(clicked:);
        [item_.button sendActionOn:NSEventMaskLeftMouseUp | NSEventMaskRightMouseUp];
    }
    [target_ setAction:std::move(action)];
}

// A menu that hangs at the item opens on a click, whatever the item's action; it comes off again, so that the next
// click is an action.
void MacStatusItem::popUpMenu(std::shared_ptr<Menu> menu) {
    NSStatusItem* item = item_; // the menu may take this object away
    item.menu = nsMenu(menu);
    [item.button performClick:nil];
    item.menu = nil;
}

void MacStatusItem::addTransition(const std::string& key, const PushTransition& transition) {
    CALayer* layer = item_.button.layer;
    if (layer == nil) {
        return;
    }
    CATransition* native = [CATransition animation];
    native.type = kCATransitionPush;
    native.subtype = transition.from == PushTransition::From::Left ? kCATransitionFromLeft : kCATransitionFromRight;
    native.duration = transition.duration;
    const TimingCurve& timing = transition.timing;
    native.timingFunction = [CAMediaTimingFunction
        functionWithControlPoints:static_cast<float>(
                                      timing.control1.x
                                      ):static_cast<float>(timing.control1.y
                                                           ):static_cast<float>(timing.control2.x
                                                                                ):static_cast<float>(timing.control2
                                                                                                         .y)];
    [layer addAnimation:native forKey:nsString(key)];
}

std::optional<Rect> MacStatusItem::frame() const {
    NSWindow* window = item_.button.window;
    return window != nil ? std::optional(rectFrom(window.frame)) : std::nullopt;
}

std::unique_ptr<Popover> MacStatusItem::showPopover(PopoverSpec spec) {
    NSView* button = item_.button;
    return button.window != nil ? showMacPopover(std::move(spec), button) : nullptr;
}

} // namespace

std::unique_ptr<StatusItem> MacStatusBar::createItem() {
    return std::make_unique<MacStatusItem>();
}

double MacStatusBar::thickness() const {
    return NSStatusBar.systemStatusBar.thickness;
}

} // namespace rb
