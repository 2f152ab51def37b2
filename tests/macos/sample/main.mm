// The smallest program the pipeline can build: a status item whose menu quits.
#import <AppKit/AppKit.h>

@interface SampleDelegate : NSObject <NSApplicationDelegate>
@property(nonatomic, strong) NSStatusItem* item;
@end

@implementation SampleDelegate
- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    (void)notification;
    self.item = [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
    NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
    [menu addItemWithTitle:@"Quit" action:@selector(terminate:) keyEquivalent:@"q"];
    self.item.menu = menu;
}
@end

int main() {
    @autoreleasepool {
        NSApplication* application = NSApplication.sharedApplication;
        SampleDelegate* delegate = [SampleDelegate new];
        application.delegate = delegate;
        [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
        if (@available(macOS 14.0, *))
            [application activate];
        [application run];
    }
}
