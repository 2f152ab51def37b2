#import "tests/macos/frame/Subject.h"

#import <QuartzCore/QuartzCore.h>

@implementation Subject {
    id monitor_;
    id observer_;
    NSTimer* timer_;
}

- (void)showItem {
    self.item = [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
    self.item.button.target = self;
    self.item.button.action = @selector(clicked:);
    NSMenu* menu = [[NSMenu alloc] initWithTitle:@"晾衣绳"];
    menu.delegate = self;
    [menu addItemWithTitle:@"退出" action:@selector(clicked:) keyEquivalent:@"q"].target = self;
    self.item.menu = menu;
}

- (NSPanel*)makePanel {
    NSPanel* panel = [[NSPanel alloc] initWithContentRect:NSMakeRect(10, 20, 300, 120)
                                                styleMask:NSWindowStyleMaskNonactivatingPanel
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO];
    panel.level = NSStatusWindowLevel;
    panel.contentView.wantsLayer = YES;
    CALayer* layer = [CALayer layer];
    layer.transform = CATransform3DIdentity;
    layer.position = CGPointMake(3.5, 4);
    [panel.contentView.layer addSublayer:layer];
    [panel orderFrontRegardless];
    return panel;
}

- (void)clicked:(id)sender {
    (void)sender;
    ++_clicks;
}

- (void)startTimer {
    __weak Subject* weak = self;
    timer_ = [NSTimer scheduledTimerWithTimeInterval:0.5
                                             repeats:YES
                                               block:^(NSTimer* timer) {
                                                   (void)timer;
                                                   ++weak.ticks;
                                               }];
}

- (void)watchWake {
    __weak Subject* weak = self;
    observer_ = [NSWorkspace.sharedWorkspace.notificationCenter addObserverForName:NSWorkspaceDidWakeNotification
                                                                            object:nil
                                                                             queue:nil
                                                                        usingBlock:^(NSNotification* notification) {
                                                                            (void)notification;
                                                                            ++weak.wakes;
                                                                        }];
}

- (void)watchMouseWithCycle:(BOOL)cycle {
    __weak Subject* weak = self;
    Subject* strong = cycle ? self : nil;
    monitor_ = [NSEvent addGlobalMonitorForEventsMatchingMask:NSEventMaskMouseMoved
                                                      handler:^(NSEvent* event) {
                                                          (void)event;
                                                          ++(strong ? strong : weak).clicks;
                                                      }];
}

- (void)stopWatching {
    [timer_ invalidate];
    if (monitor_)
        [NSEvent removeMonitor:monitor_];
    monitor_ = nil;
    if (observer_)
        [NSWorkspace.sharedWorkspace.notificationCenter removeObserver:observer_];
    observer_ = nil;
}

- (double)warpAndMeasure {
    CGWarpMouseCursorPosition(CGPointMake(7, 8));
    const CGRect bounds = CGDisplayBounds(CGMainDisplayID());
    return bounds.size.width;
}

- (void)menuNeedsUpdate:(NSMenu*)menu {
    [menu removeAllItems];
}
@end
