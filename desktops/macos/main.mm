#include "app/Main.h"

#include "desktops/macos/Desktop.h"

#import <Foundation/Foundation.h>

int main() {
    @autoreleasepool {
        rb::MacDesktop desktop;
        return rb::runRookBay(desktop.desktop());
    }
}
