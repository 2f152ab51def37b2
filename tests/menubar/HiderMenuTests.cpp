#include "tests/menubar/HiderFixture.h"

namespace rb {

namespace {

// "x title" for a checked item, "- title" for one that can't be chosen, "--" for a separator; two spaces of indentation
// a level.
std::vector<std::string> lines(const Menu& menu) {
    std::vector<std::string> found;
    for (const auto& item : menu.items()) {
        if (item->separator) {
            found.emplace_back("--");
            continue;
        }
        const std::string indentation(2 * static_cast<std::size_t>(item->indentationLevel), ' ');
        found.push_back(indentation + (item->on ? "x " : "") + (menu.isEnabled(*item) ? "" : "- ") + item->title);
    }
    return found;
}

class HiderMenuTest : public HiderTest {
protected:
    Menu& open() {
        menus::open(*hider.settingsMenu());
        return *hider.settingsMenu();
    }
    void choose(const std::string& title) { menus::choose(open(), title); }
};

TEST_F(HiderMenuTest, ListsWhatCanBeSet) {
    EXPECT_EQ(hider.settingsMenu()->title(), "菜单栏图标");
    start();
    const std::vector<std::string> expanded{"x 折叠菜单栏图标",
                                            "立即收起",
                                            "--",
                                            "- 自动收起",
                                            "  5 秒后",
                                            "  x 10 秒后",
                                            "  30 秒后",
                                            "  不按时间收起",
                                            "  x 鼠标离开菜单栏后收起",
                                            "--",
                                            "怎么隐藏图标？"};
    EXPECT_EQ(lines(open()), expanded);
    EXPECT_EQ(open().items()[1]->image, Image(Symbol{.name = "chevron.right"}));
    choose("立即收起");
    EXPECT_EQ(open().items()[1]->title, "展开隐藏的图标");
    EXPECT_EQ(open().items()[1]->image, Image(Symbol{.name = "chevron.left"}));
    choose("展开隐藏的图标");
    EXPECT_FALSE(hider.collapsed());

    desktop.statusBar().moveToBar(false);
    auto elsewhere = expanded;
    elsewhere.insert(elsewhere.begin() + 2, "  - 图标在别的面板里，Rook Bay 无法移动或隐藏它们");
    EXPECT_EQ(lines(open()), elsewhere);

    choose("折叠菜单栏图标");
    EXPECT_EQ(lines(open()), (std::vector<std::string>{"折叠菜单栏图标", "--", "怎么隐藏图标？"}));
}

TEST_F(HiderMenuTest, OpensFromEitherItemByTheRightButtonOrControl) {
    start();
    for (const char* name : {control, separator}) {
        for (const StatusItemClick& click : {StatusItemClick{.rightButton = true},
                                             StatusItemClick{.modifierFlags = ControlModifier | ShiftModifier}}) {
            item(name).click(click);
            ASSERT_TRUE(item(name).poppedUp());
            EXPECT_EQ(item(name).poppedUp()->title(), "菜单栏图标");
            EXPECT_EQ(lines(*item(name).poppedUp()), lines(open()));
            EXPECT_FALSE(hider.collapsed());
            item(name).popUpMenu(nullptr);
        }
        EXPECT_EQ(item(name).menu(), nullptr) << "a plain click still toggles";
    }
    item(control).click({.modifierFlags = ShiftModifier | OptionModifier | CommandModifier});
    EXPECT_TRUE(hider.collapsed());
}

TEST_F(HiderMenuTest, SwitchingItOffShowsEveryIconAndTakesBothItemsAway) {
    start();
    item(control).click();
    choose("折叠菜单栏图标");
    EXPECT_EQ(seen(), (std::vector<std::string>{"backup", "mail", "clock"}));
    EXPECT_FALSE(desktop.userDefaults().boolForKey("MenuBarHiderEnabled"));
    EXPECT_TRUE(desktop.runLoop().pendingTimers().empty());
    EXPECT_EQ(desktop.eventMonitors().count(), 0U);
    choose("折叠菜单栏图标");
    EXPECT_EQ(seen(), everything) << "where they were";
    EXPECT_EQ(desktop.statusBar().items().size(), 2U) << "the same ones";
    desktop.advance(10.1);
    EXPECT_TRUE(hider.collapsed());
    hider.stop();
    EXPECT_EQ(seen(), (std::vector<std::string>{"backup", "mail", "clock"}));
    EXPECT_TRUE(hider.enabled()) << "stopping is no setting";
}

TEST_F(HiderMenuTest, StartsOnlyWhenSwitchedOn) {
    desktop.userDefaults().setObject("MenuBarHiderEnabled", false);
    start();
    hider.stop();
    hider.expand();
    hider.collapseByUser({.showHint = true});
    EXPECT_TRUE(desktop.statusBar().items().empty());
    EXPECT_FALSE(hider.collapsed());
}

TEST_F(HiderMenuTest, ADelayCountsFromItsChoice) {
    start();
    desktop.advance(8);
    choose("10 秒后");
    desktop.advance(8);
    EXPECT_FALSE(hider.collapsed());
    choose("5 秒后");
    EXPECT_EQ(desktop.userDefaults().integerForKey("MenuBarHiderDelay"), 5);
    desktop.advance(5.1);
    EXPECT_TRUE(hider.collapsed());

    choose("30 秒后");
    EXPECT_TRUE(desktop.runLoop().pendingTimers().empty()) << "nothing to collapse";
    hider.expand();
    choose("不按时间收起");
    desktop.advance(100);
    EXPECT_FALSE(hider.collapsed());
}

TEST_F(HiderMenuTest, LeavingCanBeSwitchedOffAndOn) {
    start();
    choose("鼠标离开菜单栏后收起");
    EXPECT_FALSE(desktop.userDefaults().boolForKey("MenuBarHiderCollapseOnLeave"));
    movePointer(inBar);
    movePointer(below);
    desktop.advance(5);
    EXPECT_FALSE(hider.collapsed());
    choose("鼠标离开菜单栏后收起");
    movePointer(below);
    desktop.advance(1.1);
    EXPECT_TRUE(hider.collapsed());
}

} // namespace

} // namespace rb
