#include "desktops/macos/Application.h"

#include "desktops/macos/Bridge.h"
#include "platform/PreviewPanel.h"

#import <Quartz/Quartz.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <utility>

// Forwards what AppKit, the preview panel and termination signals tell the program.
@interface RBMacApplicationDelegate : NSObject <NSApplicationDelegate>
// Null while the program doesn't run.
@property(nonatomic) rb::ApplicationDelegate* target;
@property(nonatomic) rb::PreviewPanel* previewPanel;
- (void)watchTerminationSignals;
@end

@implementation RBMacApplicationDelegate {
    bool _launched;
    std::vector<std::string> _pathsBeforeLaunch;
    NSMutableArray<dispatch_source_t>* _signalSources;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    self.target->applicationDidFinishLaunching();
    _launched = true;
    if (!_pathsBeforeLaunch.empty()) {
        self.target->applicationOpenFiles(std::exchange(_pathsBeforeLaunch, {}));
    }
}

// Files that the program is started with come before the launch is finished.
- (void)application:(NSApplication*)application openURLs:(NSArray<NSURL*>*)urls {
    std::vector<std::string> paths;
    for (NSURL* url in urls) {
        if (url.fileURL) {
            paths.push_back(rb::utf8String(url.path));
        }
    }
    if (_launched) {
        self.target->applicationOpenFiles(paths);
    } else {
        _pathsBeforeLaunch.insert(_pathsBeforeLaunch.end(), paths.begin(), paths.end());
    }
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows {
    return self.target->applicationShouldHandleReopen(hasVisibleWindows != NO) ? YES : NO;
}

- (void)applicationWillTerminate:(NSNotification*)notification {
    self.target->applicationWillTerminate();
}

- (BOOL)acceptsPreviewPanelControl:(QLPreviewPanel*)panel {
    return self.target->acceptsPreviewPanelControl() ? YES : NO;
}

- (void)beginPreviewPanelControl:(QLPreviewPanel*)panel {
    self.target->beginPreviewPanelControl(*self.previewPanel);
}

- (void)endPreviewPanelControl:(QLPreviewPanel*)panel {
    if (self.target != nullptr) {
        self.target->endPreviewPanelControl(*self.previewPanel);
    }
}

- (void)watchTerminationSignals {
    _signalSources = [NSMutableArray array];
    for (const int number : std::array{SIGTERM, SIGINT, SIGHUP}) {
        // The default action would end the process before the source is told.
        std::signal(number, SIG_IGN);
        dispatch_source_t source = dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(number),
                                                          0, dispatch_get_main_queue());
        __weak RBMacApplicationDelegate* weakSelf = self;
        dispatch_source_set_event_handler(source, ^{
            // Not through AppKit's own termination, which an open alert would hold up.
            if (weakSelf.target != nullptr) {
                weakSelf.target->applicationWillTerminate();
            }
            std::exit(0);
        });
        dispatch_resume(source);
        [_signalSources addObject:source];
    }
}

@end

namespace rb {

MacApplication::MacApplication()
    : delegate_([[RBMacApplicationDelegate alloc] init]) {
    NSApplication.sharedApplication.delegate = delegate_;
}

int MacApplication::run(ApplicationDelegate& delegate) {
    delegate_.target = &delegate;
    [delegate_ watchTerminationSignals];
    [NSApplication.sharedApplication run];
    delegate_.target = nullptr;
    return 0;
}

void MacApplication::setPreviewPanel(PreviewPanel& panel) {
    delegate_.previewPanel = &panel;
}

void MacApplication::terminate() {
    [NSApplication.sharedApplication terminate:nil];
}

void MacApplication::setActivationPolicy(ActivationPolicy policy) {
    [NSApplication.sharedApplication setActivationPolicy:policy == ActivationPolicy::Accessory
                                                             ? NSApplicationActivationPolicyAccessory
                                                             : NSApplicationActivationPolicyRegular];
}

void MacApplication::activateIgnoringOtherApps() {
    [NSApplication.sharedApplication activateIgnoringOtherApps:YES];
}

std::vector<std::string> MacApplication::arguments() const {
    std::vector<std::string> arguments;
    for (NSString* argument in NSProcessInfo.processInfo.arguments) {
        arguments.push_back(utf8String(argument));
    }
    if (!arguments.empty()) {
        arguments.erase(arguments.begin());
    }
    return arguments;
}

std::optional<std::string> MacApplication::infoString(const std::string& key) const {
    id value = NSBundle.mainBundle.infoDictionary[nsString(key)];
    if (![value isKindOfClass:NSString.class]) {
        return std::nullopt;
    }
    return utf8String(value);
}

} // namespace rb
