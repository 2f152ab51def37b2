#pragma once

#include "platform/Appearance.h"
#include "platform/Menu.h"
#include "platform/Screens.h"
#include "platform/StatusBar.h"
#include "platform/TextMeter.h"
#include "tests/contract/DesktopUnderTest.h"

#include <set>

// Screens, sizes, colours, and the menu of a status item.
namespace rb {

class FactsContract : public ContractTest {};

TEST_P(FactsContract, ScreensShareOneCoordinateSpace) {
    const auto screens = desktop().screens.all();
    ASSERT_FALSE(screens.empty());
    EXPECT_EQ(screens.front().frame.origin(), (Point{0, 0})) << "the primary screen comes first";
    std::set<std::uint32_t> ids;
    for (const Screen& screen : screens) {
        EXPECT_TRUE(ids.insert(screen.id).second);
        EXPECT_FALSE(screen.visibleFrame.isEmpty());
        EXPECT_EQ(screen.frame.intersection(screen.visibleFrame), screen.visibleFrame);
        EXPECT_GT(screen.backingScaleFactor, 0);
    }
    const auto main = desktop().screens.main();
    ASSERT_TRUE(main);
    EXPECT_TRUE(ids.contains(main->id));
}

TEST_P(FactsContract, TextsAndSymbolsHaveSizes) {
    const TextMeter& meter = desktop().textMeter;
    const Size latin = meter.textSize("Rook Bay", {});
    const Size chinese = meter.textSize("剪贴板记录已暂停", {});
    EXPECT_GT(latin.width, 0);
    EXPECT_GT(chinese.width, latin.width) << "as many characters, each wider";
    EXPECT_GT(meter.textSize("Rook Bay Rook Bay", {}).width, 1.5 * latin.width);
    EXPECT_GT(meter.textSize("Rook Bay", {.size = 26}).width, 1.5 * latin.width);
    EXPECT_EQ(meter.textSize("", {}).width, 0);
    const Size symbol = meter.symbolSize({.name = "lock.fill", .pointSize = 15});
    EXPECT_GT(symbol.width, 0);
    EXPECT_GT(symbol.height, 0);
    EXPECT_EQ(meter.symbolSize({.name = "no.such.symbol", .pointSize = 15}), Size{});
}

TEST_P(FactsContract, SystemColoursDiffer) {
    const Appearance& appearance = desktop().appearance;
    EXPECT_NE(appearance.color(SystemColor::Green), appearance.color(SystemColor::ControlAccent));
    EXPECT_NE(appearance.color(SystemColor::Orange), appearance.color(SystemColor::Blue));
}

TEST_P(FactsContract, AMenuUpdatesItselfBeforeItOpensAndRefusesDisabledItems) {
    const auto item = desktop().statusBar.createItem();
    EXPECT_GT(desktop().statusBar.thickness(), 0);
    const auto menu = std::make_shared<Menu>();
    int updates = 0;
    std::string chosen;
    menu->needsUpdate = [&](Menu& opened) {
        ++updates;
        opened.removeAllItems();
        opened.addItem({.title = "go", .action = [&](MenuItem& sender) { chosen += sender.title; }, .tag = 3});
        opened.addSeparator();
        opened.addItem({.title = "nothing to do"});
        const auto inner = std::make_shared<Menu>("inner");
        inner->autoenablesItems = false;
        inner->addItem({.title = "off", .action = [&](MenuItem&) { chosen += "off"; }, .enabled = false});
        inner->addItem({.title = "on", .action = [&](MenuItem&) { chosen += "on"; }});
        opened.addItem({.title = "more", .submenu = inner});
    };
    item->setImage(Symbol{.name = "lock.display"});
    item->setMenu(menu);
    EXPECT_TRUE(user().chooseMenuItem("go"));
    EXPECT_GE(updates, 1);
    EXPECT_TRUE(user().chooseMenuItem("on"));
    EXPECT_FALSE(user().chooseMenuItem("off"));
    EXPECT_FALSE(user().chooseMenuItem("nothing to do"));
    EXPECT_FALSE(user().chooseMenuItem("not there"));
    EXPECT_TRUE(user().until([&] { return chosen == "goon"; })) << chosen;
}

} // namespace rb
