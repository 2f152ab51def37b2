#pragma once

#include "app/Main.h"
#include "desktops/macos/Desktop.h"
#include "tests/macos/MacTest.h"

#import <AppKit/AppKit.h>

#include <functional>
#include <string>
#include <vector>

namespace rb {

// Runs the whole program on the fakes: the real product on the macOS desktop.
class ProgramTest : public fake::MacTest {
protected:
    // Starts the program; the script runs inside its event loop, after the launch.
    void launch(std::function<void()> script) {
        @autoreleasepool {
            // Not the first run: the menu bar hider has introduced itself. Screenshots have tests of their own.
            [NSUserDefaults.standardUserDefaults setBool:YES forKey:@"MenuBarHiderIntroShown"];
            [NSUserDefaults.standardUserDefaults setBool:YES forKey:@"ClotheslineInboxOffered"];
            [NSUserDefaults.standardUserDefaults setBool:NO forKey:@"ClotheslineScreenshots"];
            MacDesktop desktop;
            fake::onCall("-[NSApplication run]", [&](fake::Call&) {
                [applicationDelegate() applicationDidFinishLaunching:[NSNotification new]];
                script();
                statusMenu_ = nil;
            });
            EXPECT_EQ(runRookBay(desktop.desktop()), 0);
        }
    }
    static id<NSApplicationDelegate> applicationDelegate() { return NSApplication.sharedApplication.delegate; }

    // The status menu as it is when it opens.
    NSMenu* openMenu() {
        if (statusMenu_ == nil) {
            statusMenu_ = fake::lastCall("-[NSStatusItem setMenu:]").object(0);
        }
        [statusMenu_.delegate menuNeedsUpdate:statusMenu_];
        return statusMenu_;
    }
    std::vector<std::string> titles() {
        std::vector<std::string> found;
        for (NSMenuItem* item in openMenu().itemArray) {
            found.push_back(item.isSeparatorItem ? "-" : item.title.UTF8String);
        }
        return found;
    }
    NSMenuItem* menuItem(const std::string& title) {
        for (NSMenuItem* item in openMenu().itemArray) {
            if (title == item.title.UTF8String) {
                return item;
            }
        }
        ADD_FAILURE() << "no menu item " << title;
        return nil;
    }

private:
    NSMenu* statusMenu_ = nil; // found in the record of calls, which tests forget
};

} // namespace rb
