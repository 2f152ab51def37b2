// expect-delegates: did you mean menuWillOpen:
#import <AppKit/AppKit.h>

@interface RBMacOpener : NSObject <NSMenuDelegate>
@end

@implementation RBMacOpener
- (void)menuWillOpened:(NSMenu*)menu {
    (void)menu;
}
@end
