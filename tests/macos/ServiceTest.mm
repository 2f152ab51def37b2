#include "desktops/macos/Alerts.h"
#include "desktops/macos/Appearance.h"
#include "desktops/macos/Application.h"
#include "desktops/macos/PropertyLists.h"
#include "desktops/macos/RunLoop.h"
#include "desktops/macos/Screens.h"
#include "desktops/macos/TextMeter.h"
#include "desktops/macos/UserDefaults.h"

#include "tests/macos/MacTest.h"

#import <AppKit/AppKit.h>

namespace rb {

namespace {

using ServiceTest = fake::MacTest;

TEST_F(ServiceTest, propertyListsComeBackAsTheyWent) {
    const PropertyValue value = PropertyDictionary{
        {"flag", true},
        {"zero", std::int64_t{0}},
        {"one", std::int64_t{1}},
        {"half", 0.5},
        {"text", "截图"},
        {"data", PropertyData{{0, 255}}},
        {"list", PropertyArray{false, "x", PropertyDictionary{}}},
    };
    EXPECT_EQ(propertyValue(propertyList(value)), value);
    EXPECT_EQ(propertyValue(@YES), PropertyValue(true));
    EXPECT_EQ(propertyValue(@1), PropertyValue(std::int64_t{1}));
    EXPECT_EQ(propertyValue(nil), std::nullopt);
    EXPECT_EQ(propertyValue([NSDate date]), std::nullopt);
    const id deep = @[ @1, @{@"at" : [NSDate date]} ];
    EXPECT_EQ(propertyValue(deep), std::nullopt) << "writing it back would lose the date";
}

TEST_F(ServiceTest, userDefaultsAreTheStandardOnes) {
    MacUserDefaults defaults;
    defaults.registerDefaults({{"MenuBarHiderDelay", std::int64_t{10}}});
    NSDictionary* registered = fake::lastCall("-[NSUserDefaults registerDefaults:]").object(0);
    EXPECT_TRUE([registered[@"MenuBarHiderDelay"] isEqual:@10]);
    defaults.setObject("HotKeyDisplay", "F13");
    EXPECT_EQ(fake::lastCall("-[NSUserDefaults setObject:forKey:]").string(0), "F13");
    EXPECT_EQ(fake::lastCall("-[NSUserDefaults setObject:forKey:]").receiver(), NSUserDefaults.standardUserDefaults);
    fake::answer("-[NSUserDefaults objectForKey:]", @[ @"a", @"b" ]);
    EXPECT_EQ(defaults.stringArrayForKey("ClotheslinePaths"), (std::vector<std::string>{"a", "b"}));
    defaults.removeObject("FileShelfPaths");
    EXPECT_EQ(fake::lastCall("-[NSUserDefaults removeObjectForKey:]").string(0), "FileShelfPaths");
}

TEST_F(ServiceTest, argumentsAndInformationOfTheProgram) {
    MacApplication application;
    fake::answer("-[NSProcessInfo arguments]", @[ @"/Rook Bay", @"--connections" ]);
    EXPECT_EQ(application.arguments(), (std::vector<std::string>{"--connections"}));
    fake::answer(
        NSBundle.mainBundle, "infoDictionary",
        @{@"SUFeedURL" : @"u",
          @"Number" : @1});
    EXPECT_EQ(application.infoString("SUFeedURL"), "u");
    EXPECT_EQ(application.infoString("Number"), std::nullopt);
    EXPECT_EQ(application.infoString("Absent"), std::nullopt);
}

// Knows the files that the system hands over.
class OpenedFiles final : public ApplicationDelegate {
public:
    void applicationDidFinishLaunching() override { told += "launched "; }
    bool applicationShouldHandleReopen(bool /*hasVisibleWindows*/) override { return false; }
    void applicationOpenFiles(const std::vector<std::string>& paths) override {
        for (const std::string& path : paths) {
            told += path + " ";
        }
    }
    void applicationNewTextFile(const std::optional<std::string>& /*folder*/) override {}
    void applicationWillTerminate() override {}
    bool acceptsPreviewPanelControl() override { return false; }
    void beginPreviewPanelControl(PreviewPanel& /*panel*/) override {}
    void endPreviewPanelControl(PreviewPanel& /*panel*/) override {}

    std::string told;
};

TEST_F(ServiceTest, filesThatTheProgramIsStartedWithWaitForTheLaunch) {
    MacApplication application;
    OpenedFiles product;
    fake::onCall("-[NSApplication run]", [](fake::Call&) {
        id<NSApplicationDelegate> delegate = NSApplication.sharedApplication.delegate;
        const auto open = [delegate](NSString* path) {
            [delegate application:NSApplication.sharedApplication openURLs:@[ [NSURL fileURLWithPath:path] ]];
        };
        open(@"/a");
        open(@"/b");
        [delegate applicationDidFinishLaunching:[NSNotification new]];
        open(@"/c");
    });
    application.run(product);
    EXPECT_EQ(product.told, "launched /a /b /c ");
}

TEST_F(ServiceTest, screensAreReadWithTheirNumbers) {
    NSScreen* screen = [[NSScreen alloc] init];
    fake::answer(screen, "frame", CGRectMake(1440, -100, 800, 600));
    fake::answer(screen, "visibleFrame", CGRectMake(1440, -100, 800, 570));
    fake::answer(screen, "backingScaleFactor", 2.0);
    fake::answer(screen, "localizedName", @"投影");
    fake::answer(
        screen, "deviceDescription",
        @{@"NSScreenNumber" : @69});
    fake::answer("+[NSScreen screens]", @[ screen ]);
    fake::answer("+[NSScreen mainScreen]", id(nil));
    MacScreens screens;
    const auto all = screens.all();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].id, 69u);
    EXPECT_EQ(all[0].frame, (Rect{1440, -100, 800, 600}));
    EXPECT_EQ(all[0].visibleFrame.maxY(), 470);
    EXPECT_EQ(all[0].backingScaleFactor, 2);
    EXPECT_EQ(all[0].localizedName, "投影");
    EXPECT_EQ(screens.main(), std::nullopt);
}

TEST_F(ServiceTest, screenChangesAreToldUntilTheHandleGoes) {
    MacScreens screens;
    int told = 0;
    Handle handle = screens.onChange([&] {
        ++told;
        handle.reset();
    });
    const auto observed = fake::lastCall("-[NSNotificationCenter addObserverForName:object:queue:usingBlock:]");
    EXPECT_EQ(observed.object(0), NSApplicationDidChangeScreenParametersNotification);
    observed.block<void (^)(NSNotification*)>(3)([NSNotification new]);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(fake::calls("-[NSNotificationCenter removeObserver:]").size(), 1u);
}

TEST_F(ServiceTest, coloursAreResolvedUnderTheEffectiveAppearance) {
    bool inside = false;
    fake::onCall("-[NSAppearance performAsCurrentDrawingAppearance:]", [&](fake::Call& call) {
        inside = true;
        call.block<void (^)()>(0)();
        inside = false;
    });
    NSColor* orange = [[NSColor alloc] init];
    fake::answer("+[NSColor systemOrangeColor]", orange);
    fake::answer("-[NSColor colorUsingColorSpace:]", orange);
    fake::onCall("-[NSColor getRed:green:blue:alpha:]", [&](fake::Call& call) {
        EXPECT_TRUE(inside);
        *call.pointer<CGFloat*>(0) = 1;
        *call.pointer<CGFloat*>(1) = 0.5;
        *call.pointer<CGFloat*>(3) = 0.75;
    });
    MacAppearance appearance;
    EXPECT_EQ(appearance.color(SystemColor::Orange), (Color{1, 0.5, 0, 0.75}));
    fake::answer("-[NSColor colorUsingColorSpace:]", id(nil));
    fake::answer("-[NSAppearance bestMatchFromAppearancesWithNames:]", NSAppearanceNameDarkAqua);
    EXPECT_TRUE(appearance.isDark());
    fake::answer("-[NSAppearance bestMatchFromAppearancesWithNames:]", id(nil));
    EXPECT_FALSE(appearance.isDark());
}

TEST_F(ServiceTest, appearanceChangesAreToldUntilTheHandleGoes) {
    MacAppearance appearance;
    int told = 0;
    Handle handle = appearance.onChange([&] { ++told; });
    const auto observing = fake::lastCall("-[NSApplication addObserver:forKeyPath:options:context:]");
    EXPECT_EQ(observing.string(1), "effectiveAppearance");
    id observer = observing.object(0);
    [observer observeValueForKeyPath:@"effectiveAppearance" ofObject:nil change:nil context:nullptr];
    const auto colors = fake::lastCall("-[NSNotificationCenter addObserverForName:object:queue:usingBlock:]");
    colors.block<void (^)(NSNotification*)>(3)([NSNotification new]);
    EXPECT_EQ(told, 2);
    handle.reset();
    EXPECT_EQ(fake::lastCall("-[NSApplication removeObserver:forKeyPath:context:]").object(0), observer);
    [observer observeValueForKeyPath:@"effectiveAppearance" ofObject:nil change:nil context:nullptr];
    EXPECT_EQ(told, 2);
}

TEST_F(ServiceTest, symbolsCarrySizeWeightAndTint) {
    MacTextMeter meter;
    fake::answer("-[NSImage size]", CGSizeMake(17, 15));
    const Symbol symbol{.name = "trash", .pointSize = 15, .weight = FontWeight::Semibold, .tint = Color{0, 1, 0, 1}};
    fake::answer("-[NSImage imageWithSymbolConfiguration:]", [[NSImage alloc] init]);
    EXPECT_EQ(meter.symbolSize(symbol), (Size{17, 15}));
    const auto configured = fake::lastCall("+[NSImageSymbolConfiguration configurationWithPointSize:weight:]");
    EXPECT_EQ(configured.real(0), 15);
    EXPECT_EQ(configured.real(1), NSFontWeightSemibold);
    NSArray* palette = fake::lastCall("+[NSImageSymbolConfiguration configurationWithPaletteColors:]").object(0);
    EXPECT_EQ(palette.count, 1u);
    fake::answer("+[NSImage imageWithSystemSymbolName:accessibilityDescription:]", id(nil));
    EXPECT_EQ(meter.symbolSize({.name = "no such symbol", .pointSize = 15}), Size{});
}

TEST_F(ServiceTest, alertsComeOneAfterAnother) {
    MacRunLoop loop;
    MacAlerts alerts(loop);
    std::string answers;
    int open = 0;
    fake::onCall("-[NSAlert runModal]", [&](fake::Call& call) {
        EXPECT_EQ(open++, 0) << "one on top of the other";
        if (answers.empty()) {
            alerts.runModal({.messageText = "second"}, [&](std::size_t button) { answers += std::to_string(button); });
        }
        fake::advance(1); // the run loop goes on under the alert
        --open;
        call.answer(answers.empty() ? NSAlertFirstButtonReturn + 1 : NSModalResponseStop);
    });
    alerts.runModal({.messageText = "first", .buttons = {{.title = "保留"}, {.title = "恢复", .destructive = true}}},
                    [&](std::size_t button) { answers += std::to_string(button); });
    EXPECT_TRUE(fake::calls("-[NSAlert runModal]").empty());
    fake::advance(1);
    fake::advance(1);
    EXPECT_EQ(answers, "10");
    const auto destructive = fake::calls("-[NSButton setHasDestructiveAction:]");
    ASSERT_EQ(destructive.size(), 2u);
    EXPECT_EQ(destructive[0].integer(0), 0);
    EXPECT_EQ(destructive[1].integer(0), 1);
}

} // namespace

} // namespace rb
