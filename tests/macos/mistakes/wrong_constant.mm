// expect: 'NSWindowStyleMaskNonActivatingPanel'
#import <AppKit/AppKit.h>

NSWindowStyleMask style() {
    return NSWindowStyleMaskNonActivatingPanel;
}
