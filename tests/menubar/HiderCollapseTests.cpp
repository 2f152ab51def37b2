#include "tests/menubar/HiderFixture.h"

namespace rb {

namespace {

const Symbol* symbolOf(const VirtualStatusItem& item) {
    return std::get_if<Symbol>(&item.image());
}

TEST_F(HiderTest, InstallsTwoItemsThatSayWhatTheyDo) {
    EXPECT_TRUE(desktop.statusBar().items().empty());
    start();
    EXPECT_EQ(seen(), everything);
    EXPECT_EQ(item(control).length(), 22);
    EXPECT_EQ(item(separator).length(), 14);
    EXPECT_EQ(item(control).toolTip(), "点击展开或收起菜单栏图标，右键查看选项");
    EXPECT_EQ(item(separator).toolTip(), "按住 ⌘ 把图标拖到这个点的左边，收起时就会隐藏");
    EXPECT_EQ(item(control).image(), Image(Symbol{.name = "chevron.right",
                                                  .pointSize = 12,
                                                  .weight = FontWeight::Semibold,
                                                  .accessibilityDescription = "展开或收起菜单栏图标"}));
    EXPECT_EQ(item(separator).image(), Image(Symbol{.name = "circle.fill",
                                                    .pointSize = 5,
                                                    .tint = desktop.appearance().color(SystemColor::TertiaryLabel),
                                                    .accessibilityDescription = "分隔点"}));
    EXPECT_TRUE(item(control).transitions("rb.flip").empty()) << "nothing was collapsed";
}

TEST_F(HiderTest, AClickOnEitherItemHidesWhatIsLeftOfTheDotAndBringsItBack) {
    start();
    for (const char* name : {control, separator}) {
        SCOPED_TRACE(name);
        item(name).click();
        EXPECT_EQ(seen(), withoutHidden);
        EXPECT_EQ(item(separator).length(), 10000);
        EXPECT_EQ(symbolOf(item(separator)), nullptr);
        EXPECT_EQ(symbolOf(item(control))->name, "chevron.left");
        item(name).click();
        EXPECT_EQ(seen(), everything);
        EXPECT_EQ(item(separator).length(), 14);
        EXPECT_EQ(symbolOf(item(control))->name, "chevron.right");
    }
    const auto& flips = item(control).transitions("rb.flip");
    ASSERT_EQ(flips.size(), 4U);
    EXPECT_EQ(flips[0].from, PushTransition::From::Left);
    EXPECT_EQ(flips[1].from, PushTransition::From::Right);
    EXPECT_EQ(flips[0].duration, 0.22);
    EXPECT_EQ(flips[0].timing, RBEaseOut);
}

TEST_F(HiderTest, ADotOnTheWrongSideOfTheChevronHidesNothing) {
    start();
    desktop.statusBar().dragRightOf(separator, control);
    item(control).click();
    EXPECT_FALSE(hider.collapsed());
    EXPECT_EQ(notice(), "请先按住 ⌘ 把 • 拖到箭头左边");
    desktop.advance(60);
    EXPECT_FALSE(hider.collapsed()) << "nor later by itself";
    EXPECT_EQ(notice(), "") << "which nobody is told";
    desktop.statusBar().dragLeftOf(separator, control);
    item(control).click();
    EXPECT_TRUE(hider.collapsed());
}

TEST_F(HiderTest, WithoutWindowsTheDotCountsAsLeft) {
    start();
    desktop.statusBar().setHasWindows(false);
    item(control).click();
    EXPECT_TRUE(hider.collapsed());
}

TEST_F(HiderTest, CollapsesAfterTheDelay) {
    start();
    desktop.advance(9.9);
    EXPECT_FALSE(hider.collapsed());
    desktop.advance(0.2);
    EXPECT_EQ(seen(), withoutHidden);
    EXPECT_TRUE(desktop.runLoop().pendingTimers().empty());
    EXPECT_EQ(desktop.eventMonitors().count(), 0U) << "a collapsed bar watches nothing";
    item(control).click();
    desktop.advance(10.1);
    EXPECT_TRUE(hider.collapsed()) << "each time anew";
}

TEST_F(HiderTest, CollapsesASecondAfterThePointerLeftTheBar) {
    start();
    movePointer(inBar);
    desktop.advance(3);
    movePointer(below);
    desktop.advance(0.9);
    EXPECT_FALSE(hider.collapsed());
    movePointer(inBar); // back in time
    desktop.advance(3);
    EXPECT_FALSE(hider.collapsed());
    movePointer(below);
    desktop.advance(0.5);
    movePointer(below - 100); // moving on outside doesn't start it anew
    desktop.advance(0.6);
    EXPECT_TRUE(hider.collapsed());
}

// The bar is 38 points high on a screen of 982; 6 more below it count.
TEST_F(HiderTest, ABandBelowTheBarCountsAsTheBar) {
    struct Case {
        double y;
        bool collapses;
    };
    for (const Case& tested : {Case{982, false}, Case{944, false}, Case{938, false}, Case{937.5, true}}) {
        SCOPED_TRACE(tested.y);
        start();
        hider.expand();
        movePointer(tested.y);
        desktop.advance(1.5);
        EXPECT_EQ(hider.collapsed(), tested.collapses);
    }
    // Where the bar hides itself it counts with the height that it would have.
    desktop.screens().set({{.id = 1, .frame = {0, 0, 1512, 982}, .visibleFrame = {0, 0, 1512, 982}}});
    hider.expand();
    movePointer(982 - 24 - 6);
    desktop.advance(1.5);
    EXPECT_FALSE(hider.collapsed());
    movePointer(2000); // on no screen
    desktop.advance(1.5);
    EXPECT_TRUE(hider.collapsed());
}

TEST_F(HiderTest, AnOpenMenuPutsItOff) {
    start();
    movePointer(inBar);
    movePointer(below); // into a menu below the bar
    desktop.windowList().setLayers(std::vector<int>{0, PopUpMenuWindowLayer});
    desktop.advance(5);
    EXPECT_FALSE(hider.collapsed());
    desktop.windowList().setLayers(std::vector<int>{0, 25});
    desktop.advance(1.5);
    EXPECT_TRUE(hider.collapsed()) << "tried again every 1.5 s";

    hider.expand();
    desktop.windowList().setLayers(std::nullopt);
    desktop.advance(10.1);
    EXPECT_TRUE(hider.collapsed()) << "an unreadable list shows no menu";
}

TEST_F(HiderTest, InTheBarTheAttemptsEndAndLeavingStartsThemAnew) {
    start();
    movePointer(inBar);
    desktop.advance(60);
    EXPECT_FALSE(hider.collapsed());
    EXPECT_TRUE(desktop.runLoop().pendingTimers().empty());
    movePointer(below);
    desktop.advance(1.1);
    EXPECT_TRUE(hider.collapsed());

    desktop.userDefaults().setObject("MenuBarHiderCollapseOnLeave", false);
    movePointer(inBar);
    hider.expand();
    desktop.advance(60);
    movePointer(below);
    desktop.advance(60);
    EXPECT_FALSE(hider.collapsed()) << "nobody watches the pointer any more";
}

TEST_F(HiderTest, WithoutDelayAndWithoutLeavingItStaysExpanded) {
    desktop.userDefaults().setObject("MenuBarHiderDelay", std::int64_t{0});
    desktop.userDefaults().setObject("MenuBarHiderCollapseOnLeave", false);
    start();
    movePointer(inBar);
    movePointer(below);
    desktop.advance(3600);
    EXPECT_EQ(seen(), everything);
    EXPECT_EQ(desktop.eventMonitors().count(), 0U);
}

TEST_F(HiderTest, APanelThatArrangesItsIconsIsLeftAlone) {
    start();
    item(control).click();
    ASSERT_TRUE(hider.collapsed());
    desktop.statusBar().moveToBar(false);
    EXPECT_EQ(seen(), everything) << "never an icon lost";
    desktop.advance(60);
    EXPECT_FALSE(hider.collapsed());
    item(control).click();
    EXPECT_FALSE(hider.collapsed());
    EXPECT_EQ(notice(), "这个面板自己排列图标，无法收起");
    desktop.statusBar().moveToBar(true);
    item(control).click();
    EXPECT_TRUE(hider.collapsed());
}

TEST_F(HiderTest, TheDotFollowsTheAppearance) {
    start();
    desktop.appearance().setDark(!desktop.appearance().isDark());
    EXPECT_EQ(symbolOf(item(separator))->tint, desktop.appearance().color(SystemColor::TertiaryLabel));
    item(control).click();
    desktop.appearance().setDark(!desktop.appearance().isDark());
    EXPECT_EQ(symbolOf(item(separator)), nullptr) << "a hidden dot stays hidden";
}

} // namespace

} // namespace rb
