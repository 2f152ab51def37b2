#include "desktops/macos/PreviewPanel.h"

#include "desktops/macos/Bridge.h"

#import <AppKit/AppKit.h>
#import <Quartz/Quartz.h>

// Answers the panel's questions.
@interface RBMacPreviewSource : NSObject <QLPreviewPanelDataSource, QLPreviewPanelDelegate>
@property(nonatomic) rb::PreviewPanelDelegate* delegate;
@end

@implementation RBMacPreviewSource

- (NSInteger)numberOfPreviewItemsInPreviewPanel:(QLPreviewPanel*)panel {
    return self.delegate != nullptr ? static_cast<NSInteger>(self.delegate->numberOfPreviewItems()) : 0;
}

- (id<QLPreviewItem>)previewPanel:(QLPreviewPanel*)panel previewItemAtIndex:(NSInteger)index {
    const auto path = self.delegate != nullptr && index >= 0
                          ? self.delegate->previewItemAtIndex(static_cast<std::size_t>(index))
                          : std::nullopt;
    return path ? [NSURL fileURLWithPath:rb::nsString(*path)] : nil;
}

- (BOOL)previewPanel:(QLPreviewPanel*)panel handleEvent:(NSEvent*)event {
    if (self.delegate == nullptr || event.type != NSEventTypeKeyDown) {
        return NO;
    }
    return self.delegate->handleEvent(
               {.keyCode = event.keyCode, .modifierFlags = static_cast<std::uint32_t>(event.modifierFlags)})
               ? YES
               : NO;
}

@end

namespace rb {

MacPreviewPanel::MacPreviewPanel()
    : source_([[RBMacPreviewSource alloc] init]) {}

MacPreviewPanel::~MacPreviewPanel() {
    // The panel keeps no reference to whom it asks.
    setDelegate(nullptr);
}

bool MacPreviewPanel::isVisible() const {
    return QLPreviewPanel.sharedPreviewPanelExists && QLPreviewPanel.sharedPreviewPanel.visible;
}

void MacPreviewPanel::updateController() {
    [QLPreviewPanel.sharedPreviewPanel updateController];
}

void MacPreviewPanel::setDelegate(PreviewPanelDelegate* delegate) {
    source_.delegate = delegate;
    if (!QLPreviewPanel.sharedPreviewPanelExists) {
        return;
    }
    QLPreviewPanel* panel = QLPreviewPanel.sharedPreviewPanel;
    panel.dataSource = delegate != nullptr ? source_ : nil;
    panel.delegate = delegate != nullptr ? source_ : nil;
}

void MacPreviewPanel::reloadData() {
    [QLPreviewPanel.sharedPreviewPanel reloadData];
}

std::size_t MacPreviewPanel::currentPreviewItemIndex() const {
    const NSInteger index = QLPreviewPanel.sharedPreviewPanel.currentPreviewItemIndex;
    return index > 0 ? static_cast<std::size_t>(index) : 0;
}

void MacPreviewPanel::setCurrentPreviewItemIndex(std::size_t index) {
    QLPreviewPanel.sharedPreviewPanel.currentPreviewItemIndex = static_cast<NSInteger>(index);
}

void MacPreviewPanel::makeKeyAndOrderFront() {
    [QLPreviewPanel.sharedPreviewPanel makeKeyAndOrderFront:nil];
}

} // namespace rb
