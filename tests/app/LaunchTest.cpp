#include "app/Main.h"
#include "desktops/virtual/Menus.h"
#include "tests/app/AppFixture.h"

namespace rb {

namespace {

using testing::ElementsAre;

class LaunchTest : public AppTest {};

TEST_F(LaunchTest, BecomesAnAccessoryThenBuildsTheMenuThenTakesTheHotKey) {
    launch();
    EXPECT_THAT(desktop_.journal().lines(),
                ElementsAre("setActivationPolicy accessory", "createStatusItem", "createStatusItem", "createStatusItem",
                            "installHotKeyHandler", "registerHotKey 105 0"));
    EXPECT_FALSE(desktop_.application().isActive()) << "launching takes nobody's focus";
    EXPECT_TRUE(desktop_.windows().visible().empty());
    EXPECT_TRUE(desktop_.alerts().shown().empty());
}

struct ExpectedItem {
    std::string title = {}; // empty for a separator
    std::string symbol = {};
    bool enabled = true;
    int indentation = 0;
    std::string key = {};
    bool submenu = false;
};

void expectItems(const Menu& menu, const std::vector<ExpectedItem>& expected) {
    ASSERT_EQ(menu.items().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE("item " + std::to_string(i) + " " + expected[i].title);
        const MenuItem& item = *menu.items()[i];
        EXPECT_EQ(item.separator, expected[i].title.empty());
        EXPECT_EQ(item.title, expected[i].title);
        const Symbol* symbol = std::get_if<Symbol>(&item.image);
        EXPECT_EQ(symbol ? symbol->name : "", expected[i].symbol);
        EXPECT_EQ(menu.isEnabled(item), expected[i].enabled && !item.separator);
        EXPECT_EQ(item.indentationLevel, expected[i].indentation);
        EXPECT_EQ(item.keyEquivalent, expected[i].key);
        if (!expected[i].key.empty()) {
            EXPECT_EQ(item.keyEquivalentModifiers, CommandModifier);
        }
        EXPECT_EQ(item.submenu != nullptr, expected[i].submenu);
        if (item.submenu) {
            EXPECT_EQ(item.submenu->title(), expected[i].title) << "the feature's own menu";
        }
    }
}

const std::vector<ExpectedItem> statusItems{
    {.title = "立即锁屏并关闭显示器", .symbol = "lock.fill"},
    {.title = "当前快捷键：F13", .enabled = false, .indentation = 1},
    {},
    {.title = "剪贴板历史", .symbol = "doc.on.clipboard", .submenu = true},
    {.title = "晾衣绳", .symbol = "tshirt", .submenu = true},
    {.title = "菜单栏图标", .symbol = "menubar.rectangle", .submenu = true},
    {.title = "新建 TXT…", .symbol = "doc.badge.plus"},
    {},
    {.title = "屏幕与连接…", .symbol = "display.2"},
    {.title = "设置快捷键…", .symbol = "keyboard", .key = ","},
    {},
    {.title = "退出 Rook Bay", .key = "q"},
};

TEST_F(LaunchTest, TheStatusMenuHoldsEveryFeature) {
    launch();
    ASSERT_EQ(desktop_.statusBar().items().size(), 3U) << "the program's own and the hider's two";
    const VirtualStatusItem& item = *desktop_.statusBar().items().front();
    EXPECT_EQ(item.image(), Image(Symbol{.name = "lock.display", .accessibilityDescription = "Rook Bay"}));
    EXPECT_EQ(item.toolTip(), "Rook Bay：F13 锁屏");
    expectItems(desktop_.statusMenu(), statusItems);
}

TEST_F(LaunchTest, UpdatesAreOfferedOnlyWhenTheyAreConfiguredAndPossible) {
    struct Case {
        const char* name;
        std::optional<std::string> feed;
        std::optional<std::string> key;
        bool available;
        bool offered;
    };
    const std::vector<Case> cases{
        {"configured", "https://example.org/appcast.xml", "abc=", true, true},
        {"nothing", std::nullopt, std::nullopt, true, false},
        {"no key", "https://example.org/appcast.xml", std::nullopt, true, false},
        {"empty key", "https://example.org/appcast.xml", "", true, false},
        {"empty feed", "", "abc=", true, false},
        {"no controller", "https://example.org/appcast.xml", "abc=", false, false},
    };
    for (const Case& tested : cases) {
        SCOPED_TRACE(tested.name);
        VirtualDesktop desktop;
        if (tested.feed) {
            desktop.application().setInfoString("SUFeedURL", *tested.feed);
        }
        if (tested.key) {
            desktop.application().setInfoString("SUPublicEDKey", *tested.key);
        }
        desktop.updates().setAvailable(tested.available);
        AppDelegate app(desktop.services());
        desktop.application().run(app);
        auto expected = statusItems;
        if (tested.offered) {
            expected.insert(expected.begin() + 10, {.title = "检查更新…", .symbol = "arrow.triangle.2.circlepath"});
            EXPECT_EQ(desktop.journal().lines().at(1), "startUpdater") << "before the menu";
        }
        expectItems(desktop.statusMenu(), expected);
        if (tested.offered) {
            desktop.chooseMenuItem("检查更新…");
            EXPECT_THAT(desktop.updates().checks(), ElementsAre(std::nullopt)) << "through the primary feed";
        }
        desktop.application().terminate();
    }
}

TEST_F(LaunchTest, ConnectionsAreShownOnRequestOnly) {
    desktop_.application().setArguments({"--verbose"});
    launch();
    EXPECT_FALSE(displaysWereShown());
    desktop_.chooseMenuItem("屏幕与连接…");
    EXPECT_TRUE(displaysWereShown());
    EXPECT_TRUE(desktop_.application().reopen());
    EXPECT_TRUE(displaysWereShown());
    EXPECT_TRUE(desktop_.application().reopen(true));
    EXPECT_TRUE(displaysWereShown());
    quit();

    desktop_.application().setArguments({"-x", "--connections"});
    launch();
    EXPECT_TRUE(displaysWereShown());
}

TEST_F(LaunchTest, QuittingByTheMenuReleasesTheHotKeyAndLeavesNothing) {
    launch();
    desktop_.journal().clear();
    menus::chooseByKey(desktop_.statusMenu(), "q", CommandModifier);
    EXPECT_FALSE(desktop_.application().isRunning());
    EXPECT_THAT(desktop_.journal().lines(), ElementsAre("terminate", "unregisterHotKey 105 0"));
    app_.reset();
    EXPECT_TRUE(desktop_.statusBar().items().empty());
    EXPECT_EQ(desktop_.hotKeys().handlerCount(), 0U);
    EXPECT_TRUE(desktop_.runLoop().pendingTimers().empty());
}

TEST_F(LaunchTest, QuittingInTheMiddleOfEverythingIsOrderly) {
    AppDelegate& app = launch();
    app.showHotKeySettings();
    app.showDisplays(); // its first pass is under way
    app.toasts().RBShowToast("晾衣绳已清空", "tshirt", SystemColor::Blue);
    app.lockAndSleep();
    desktop_.hotKeys().press(105, 0); // posted, not yet run
    quit();
    desktop_.advance(10);
    EXPECT_EQ(desktop_.sessionLock().log().size(), 1U) << "the displays of a program that quit stay on";
    EXPECT_TRUE(desktop_.panels().visible().empty());
    EXPECT_EQ(desktop_.windows().count(), 0U);
}

TEST_F(LaunchTest, TheEntryPointRunsTheProgramUntilItQuits) {
    std::string seen;
    desktop_.application().setScript([&] {
        seen = statusLine();
        desktop_.chooseMenuItem("退出 Rook Bay");
    });
    EXPECT_EQ(runRookBay(desktop_.services()), 0);
    EXPECT_EQ(seen, "当前快捷键：F13");
    EXPECT_TRUE(desktop_.statusBar().items().empty());
}

TEST_F(LaunchTest, FilePreviewsAreOurs) {
    EXPECT_TRUE(launch().acceptsPreviewPanelControl());
}

} // namespace

} // namespace rb
