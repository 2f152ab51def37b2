// expect: 'statusItemOfLength:'
#import <AppKit/AppKit.h>

void make() {
    (void)[NSStatusBar.systemStatusBar statusItemOfLength:NSVariableStatusItemLength];
}
