// expect: 'NSStatusbar'
#import <AppKit/AppKit.h>

void make() {
    (void)[NSStatusbar systemStatusBar];
}
