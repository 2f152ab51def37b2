// expect-delegates: did you mean menuWillOpen:
#import <AppKit/AppKit.h>

@interface Opener : NSObject <NSMenuDelegate>
@end

@implementation Opener
- (void)menuWillOpened:(NSMenu*)menu {
    (void)menu;
}
@end
