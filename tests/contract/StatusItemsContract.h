#pragma once

#include "platform/Screens.h"
#include "platform/StatusBar.h"
#include "tests/contract/DesktopUnderTest.h"

#include <vector>

namespace rb {

class StatusItemsContract : public ContractTest {
protected:
    std::unique_ptr<StatusItem> createItem(const std::string& name, double length) {
        auto item = desktop().statusBar.createItem();
        item->setLength(length);
        item->setAutosaveName(name);
        item->setImage(Symbol{.name = "lock.display"});
        return item;
    }
    // Once the bar has given them their places.
    void settle(const std::vector<const StatusItem*>& items) {
        EXPECT_TRUE(user().until([&] {
            for (const StatusItem* item : items) {
                const auto frame = item->frame();
                if (!frame || frame->width == 0) {
                    return false;
                }
            }
            return true;
        }));
    }
    static Rect frameOf(const StatusItem& item) { return item.frame().value_or(Rect{}); }
};

TEST_P(StatusItemsContract, NewerItemsStandLeftOfOlderOnesAndHaveTheirLengths) {
    const auto first = createItem("first", 22);
    const auto second = createItem("second", 14);
    settle({first.get(), second.get()});
    EXPECT_EQ(frameOf(*first).width, 22);
    EXPECT_EQ(frameOf(*second).width, 14);
    EXPECT_EQ(frameOf(*second).maxX(), frameOf(*first).x);
    const auto screen = desktop().screens.all().front().frame;
    EXPECT_LE(frameOf(*first).maxY(), screen.maxY());
    EXPECT_GE(frameOf(*first).y, screen.maxY() - desktop().statusBar.thickness());
}

TEST_P(StatusItemsContract, ALongItemPushesOutWhatIsLeftOfItAndGivesItBack) {
    ASSERT_TRUE(desktop().statusBar.longItemsPushOthersOut());
    const auto right = createItem("right", 22);
    const auto middle = createItem("middle", 14);
    const auto left = createItem("left", 30);
    settle({right.get(), middle.get(), left.get()});
    const Rect before = frameOf(*left);
    const Rect stays = frameOf(*right);
    middle->setLength(10000);
    EXPECT_TRUE(user().until([&] { return frameOf(*left).maxX() <= 0; }));
    EXPECT_EQ(frameOf(*right), stays);
    EXPECT_TRUE(left->isVisible()) << "out of the bar, but not hidden";
    middle->setLength(14);
    EXPECT_TRUE(user().until([&] { return frameOf(*left) == before; }));
}

TEST_P(StatusItemsContract, HiddenItemsLeaveNoGapAndComeBackToTheirPlaces) {
    const auto right = createItem("right", 22);
    const auto left = createItem("left", 30);
    settle({right.get(), left.get()});
    const Rect place = frameOf(*right);
    const Rect before = frameOf(*left);
    right->setVisible(false);
    EXPECT_FALSE(right->isVisible());
    EXPECT_FALSE(right->frame());
    EXPECT_EQ(right->showPopover({}), nullptr) << "nothing to hang it at";
    EXPECT_TRUE(user().until([&] { return frameOf(*left).maxX() == place.maxX(); }));
    right->setVisible(true);
    EXPECT_TRUE(user().until([&] { return right->frame() == place && left->frame() == before; }));
}

TEST_P(StatusItemsContract, ClicksTellTheirButtonAndModifiers) {
    const auto item = createItem("item", 30);
    std::vector<StatusItemClick> clicks;
    item->setAction([&](const StatusItemClick& click) { clicks.push_back(click); });
    settle({item.get()});
    user().clickStatusItem(*item, {});
    ASSERT_TRUE(user().until([&] { return clicks.size() == 1; }));
    EXPECT_FALSE(clicks[0].rightButton);
    EXPECT_EQ(clicks[0].modifierFlags, std::uint32_t{NoModifiers});
    user().clickStatusItem(*item, {.rightButton = true});
    ASSERT_TRUE(user().until([&] { return clicks.size() == 2; }));
    EXPECT_TRUE(clicks[1].rightButton);
    user().clickStatusItem(*item, {.modifierFlags = ControlModifier});
    ASSERT_TRUE(user().until([&] { return clicks.size() == 3; }));
    EXPECT_FALSE(clicks[2].rightButton);
    EXPECT_EQ(clicks[2].modifierFlags, std::uint32_t{ControlModifier});
}

TEST_P(StatusItemsContract, AMenuPopsUpOnceAndClicksAreActionsAgain) {
    const auto item = createItem("item", 30);
    int clicks = 0;
    std::string chosen;
    item->setAction([&](const StatusItemClick& click) {
        ++clicks;
        if (click.rightButton) {
            const auto menu = std::make_shared<Menu>("menu");
            menu->addItem({.title = "one", .action = [&](MenuItem& sender) { chosen += sender.title; }});
            item->popUpMenu(menu);
        }
    });
    settle({item.get()});
    user().clickStatusItem(*item, {.rightButton = true});
    EXPECT_TRUE(user().chooseInPoppedUpMenu(*item, "one"));
    EXPECT_TRUE(user().until([&] { return chosen == "one"; }));
    user().clickStatusItem(*item, {});
    EXPECT_TRUE(user().until([&] { return clicks == 2; }));
    EXPECT_EQ(chosen, "one");
}

TEST_P(StatusItemsContract, AnItemMayGoInItsOwnAction) {
    auto item = createItem("item", 30);
    bool clicked = false;
    item->setAction([&](const StatusItemClick&) {
        clicked = true;
        item = nullptr;
    });
    settle({item.get()});
    user().clickStatusItem(*item, {});
    EXPECT_TRUE(user().until([&] { return clicked; }));
    user().live(0.1);
    EXPECT_EQ(item, nullptr);
}

TEST_P(StatusItemsContract, APopoverTellsItsEndOnceWhoeverClosesIt) {
    const auto item = createItem("item", 30);
    settle({item.get()});
    int closed = 0;
    const auto show = [&] {
        return item->showPopover({.content = {.content = LabelView{.text = "text"}}, .didClose = [&] { ++closed; }});
    };
    auto popover = show();
    ASSERT_NE(popover, nullptr);
    user().live(0.1);
    EXPECT_EQ(closed, 0);
    popover->close();
    popover->close();
    EXPECT_TRUE(user().until([&] { return closed == 1; }));
    popover = show();
    user().pressElsewhere(*popover);
    EXPECT_TRUE(user().until([&] { return closed == 2; }));
    popover = show();
    popover = nullptr;
    user().live(0.5);
    EXPECT_EQ(closed, 2) << "taken away without a word";
}

} // namespace rb
