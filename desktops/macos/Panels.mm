#include "desktops/macos/Panels.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/PanelView.h"

// A panel that never takes the focus.
@interface RBMacPanel : NSPanel
@end

@implementation RBMacPanel

- (BOOL)canBecomeKeyWindow {
    return NO;
}

- (BOOL)canBecomeMainWindow {
    return NO;
}

@end

namespace rb {

namespace {

class MacPanel final : public Panel {
public:
    explicit MacPanel(const PanelSpec& spec);
    ~MacPanel() override {
        content_.input = nullptr;
        [content_ forgetDrag]; // its session holds the view
        orderOut();
    }
    MacPanel(const MacPanel&) = delete;
    MacPanel& operator=(const MacPanel&) = delete;

    Rect frame() const override { return rectFrom(panel_.frame); }
    void setFrame(const Rect& frame) override;
    void orderFrontRegardless() override;
    void orderOut() override;
    bool isVisible() const override { return panel_.visible != NO; }
    void setIgnoresMouseEvents(bool ignores) override;
    bool setMouseAreas(const std::vector<Rect>& /*areas*/) override { return false; }
    void setInput(PanelInput* input) override { content_.input = input; }
    void beginDrag(const FileDrag& drag) override { [content_ beginDrag:drag]; }
    // At the event that is being told, which AppKit takes the place from.
    void showContextMenu(const std::shared_ptr<Menu>& menu, Point /*location*/, std::function<void()> closed) override {
        [content_ showMenu:menu closed:closed];
    }
    const std::shared_ptr<Layer>& rootLayer() override { return rootLayer_; }
    double backingScaleFactor() const override { return panel_.backingScaleFactor; }

private:
    RBMacPanel* panel_;
    RBMacPanelView* content_;
    std::shared_ptr<Layer> rootLayer_ = Layer::create();
};

MacPanel::MacPanel(const PanelSpec& spec)
    : panel_([[RBMacPanel alloc] initWithContentRect:cgRect(spec.frame)
                                           styleMask:NSWindowStyleMaskBorderless | NSWindowStyleMaskNonactivatingPanel
                                             backing:NSBackingStoreBuffered
                                               defer:NO])
    , content_([[RBMacPanelView alloc] initWithFrame:cgRect({0, 0, spec.frame.width, spec.frame.height})]) {
    panel_.opaque = NO;
    panel_.backgroundColor = NSColor.clearColor;
    panel_.level = spec.level;
    panel_.collectionBehavior = spec.collectionBehavior;
    panel_.hasShadow = spec.hasShadow ? YES : NO;
    panel_.ignoresMouseEvents = spec.ignoresMouseEvents ? YES : NO;
    // A panel hides by default while its program is in the background, where this one always is.
    panel_.hidesOnDeactivate = NO;
    panel_.movable = NO;
    panel_.becomesKeyOnlyIfNeeded = YES;
    panel_.releasedWhenClosed = NO;
    panel_.contentView = content_;
    if (spec.acceptsFiles) {
        [content_ registerForDraggedTypes:@[ NSPasteboardTypeFileURL ]];
    }
    rootLayer_->change().setFrame({0, 0, spec.frame.width, spec.frame.height});
}

void MacPanel::setFrame(const Rect& frame) {
    rootLayer_->change().setFrame({0, 0, frame.width, frame.height});
    [panel_ setFrame:cgRect(frame) display:NO];
}

void MacPanel::setIgnoresMouseEvents(bool ignores) {
    // Asked many times a second; the window server needs to hear of changes only.
    if ((panel_.ignoresMouseEvents != NO) != ignores) {
        panel_.ignoresMouseEvents = ignores ? YES : NO;
    }
}

void MacPanel::orderFrontRegardless() {
    // First the content, so that the panel never shows without it.
    [content_ showLayer:rootLayer_];
    [content_ flush];
    [panel_ orderFrontRegardless];
}

void MacPanel::orderOut() {
    [panel_ orderOut:nil];
    [content_ showLayer:nullptr];
}

} // namespace

std::unique_ptr<Panel> MacPanels::createPanel(const PanelSpec& spec) {
    return std::make_unique<MacPanel>(spec);
}

} // namespace rb
