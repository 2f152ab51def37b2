#include "tests/macos/Program.h"

#import <AppKit/AppKit.h>
#import <Quartz/Quartz.h>

#include <algorithm>
#include <csignal>

namespace {

int updateChecks = 0;
bool usedConfiguredFeed = false; // in the last check

} // namespace

@protocol FeedQuestion
- (NSString*)feedURLStringForUpdater:(id)updater;
@end

// What the framework's controller would be; found by name.
@interface SPUStandardUpdaterController : NSObject
@property(nonatomic, weak) id<FeedQuestion> updaterDelegate;
@end

@implementation SPUStandardUpdaterController
- (instancetype)initWithStartingUpdater:(BOOL)start updaterDelegate:(id)delegate userDriverDelegate:(id)driver {
    self = [super init];
    if (self != nil && start && driver == nil) {
        _updaterDelegate = delegate;
    }
    return self;
}
- (void)checkForUpdates:(id)sender {
    ++updateChecks;
    usedConfiguredFeed = [_updaterDelegate feedURLStringForUpdater:self] == nil;
}
@end

namespace rb {

namespace {

using LaunchTest = ProgramTest;

// Position of the first call that fits, for orders.
std::size_t positionOf(const std::string& pattern) {
    const auto calls = fake::calls();
    const auto found =
        std::find_if(calls.begin(), calls.end(), [&](const fake::Call& call) { return call.fits(pattern); });
    EXPECT_NE(found, calls.end()) << pattern << " was never called";
    return static_cast<std::size_t>(found - calls.begin());
}

TEST_F(LaunchTest, doesTheStepsInOrder) {
    launch([] {
        const std::size_t policy = positionOf("-[NSApplication setActivationPolicy:] 1");
        const std::size_t item = positionOf("-[NSStatusBar statusItemWithLength:] -1");
        const std::size_t menu = positionOf("-[NSStatusItem setMenu:]");
        const std::size_t handler = positionOf("InstallEventHandler");
        const std::size_t hotKey = positionOf("RegisterEventHotKey");
        EXPECT_LT(policy, item);
        EXPECT_LT(item, menu);
        EXPECT_LT(menu, handler);
        EXPECT_LT(handler, hotKey);
    });
    EXPECT_EQ(fake::calls("-[NSApplication run]").size(), 1u);
}

TEST_F(LaunchTest, fillsTheStatusItem) {
    launch([this] {
        const auto symbol = fake::calls("+[NSImage imageWithSystemSymbolName:accessibilityDescription:]").front();
        EXPECT_EQ(symbol.string(0), "lock.display");
        EXPECT_EQ(symbol.string(1), "Rook Bay");
        EXPECT_EQ(fake::calls("-[NSStatusBarButton setToolTip:]").front().string(0), "Rook Bay：F13 锁屏");
        EXPECT_EQ(titles(), (std::vector<std::string>{"立即锁屏并关闭显示器", "当前快捷键：F13", "-", "剪贴板历史",
                                                      "晾衣绳", "菜单栏图标", "新建 TXT…", "-", "屏幕与连接…",
                                                      "设置快捷键…", "-", "退出 Rook Bay"}));
        EXPECT_TRUE(menuItem("剪贴板历史").hasSubmenu);
        NSMenuItem* settings = menuItem("设置快捷键…");
        EXPECT_TRUE([settings.keyEquivalent isEqualToString:@","]);
        EXPECT_EQ(settings.keyEquivalentModifierMask, NSEventModifierFlagCommand);
        NSMenuItem* info = menuItem("当前快捷键：F13");
        EXPECT_EQ(info.action, nullptr);
        EXPECT_EQ(info.indentationLevel, 1);
        EXPECT_FALSE(info.enabled);
    });
}

TEST_F(LaunchTest, bringsInTheItemsOfTheMenuBarHider) {
    launch([] {
        std::vector<std::string> names;
        for (const auto& call : fake::calls("-[NSStatusItem setAutosaveName:]")) {
            names.push_back(call.string(0));
        }
        EXPECT_EQ(names, (std::vector<std::string>{"RookBayHiderControl", "RookBayHiderSeparator"}));
        std::vector<double> lengths;
        for (const auto& call : fake::calls("-[NSStatusItem setLength:]")) {
            lengths.push_back(call.real(0));
        }
        EXPECT_EQ(lengths, (std::vector<double>{22, 14, 14}));
        EXPECT_TRUE(fake::called("-[NSStatusItem setVisible:] YES"));
    });
}

TEST_F(LaunchTest, quitsThroughTheApplicationAndUnregisters) {
    launch([this] {
        fake::press(menuItem("退出 Rook Bay"));
        EXPECT_EQ(fake::calls("-[NSApplication terminate:]").size(), 1u);
        EXPECT_TRUE(fake::calls("UnregisterEventHotKey").empty());
        [applicationDelegate() applicationWillTerminate:[NSNotification new]];
        EXPECT_EQ(fake::calls("UnregisterEventHotKey").size(), 1u);
    });
}

TEST_F(LaunchTest, answersReopenAndThePreviewPanel) {
    launch([] {
        EXPECT_TRUE([applicationDelegate() applicationShouldHandleReopen:NSApplication.sharedApplication
                                                       hasVisibleWindows:NO]);
        EXPECT_TRUE([(NSObject*)applicationDelegate() acceptsPreviewPanelControl:nil]);
    });
}

TEST_F(LaunchTest, watchesTheTerminationSignals) {
    launch([] {
        for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
            // The default action would end the process before its source is told.
            EXPECT_EQ(std::signal(number, SIG_DFL), SIG_IGN) << number;
        }
    });
}

TEST_F(LaunchTest, startsTheUpdaterOnlyWhenConfigured) {
    NSBundle* main = NSBundle.mainBundle;
    fake::answer(main, "infoDictionary", @{@"SUFeedURL" : @"https://feed.example/a.xml", @"SUPublicEDKey" : @""});
    launch([this] {
        EXPECT_TRUE(fake::calls("+[NSBundle bundleWithPath:]").empty());
        EXPECT_EQ(std::ranges::count(titles(), "检查更新…"), 0);
    });
    fake::answer(main, "infoDictionary", @{@"SUFeedURL" : @"https://feed.example/a.xml", @"SUPublicEDKey" : @"key"});
    fake::answer(main, "privateFrameworksPath", @"/App/Contents/Frameworks");
    fake::answer("+[NSBundle bundleWithPath:]", main);
    fake::answer("-[NSBundle loadAndReturnError:]", true);
    launch([this] {
        EXPECT_EQ(fake::lastCall("+[NSBundle bundleWithPath:]").string(0),
                  "/App/Contents/Frameworks/Sparkle.framework");
        fake::press(menuItem("检查更新…"));
        EXPECT_EQ(updateChecks, 1);
        EXPECT_TRUE(usedConfiguredFeed);
    });
}

TEST_F(LaunchTest, worksWithoutTheUpdateFramework) {
    fake::answer(NSBundle.mainBundle, "infoDictionary",
                 @{@"SUFeedURL" : @"https://a.example", @"SUPublicEDKey" : @"key"});
    fake::answer("+[NSBundle bundleWithPath:]", id(nil));
    launch([this] {
        EXPECT_EQ(std::ranges::count(titles(), "检查更新…"), 0);
        EXPECT_EQ(fake::calls("RegisterEventHotKey").size(), 1u);
    });
}

} // namespace

} // namespace rb
