#include "desktops/macos/Menus.h"
#include "desktops/macos/StatusBar.h"

#include "tests/macos/MacTest.h"

namespace rb {

namespace {

class MenuTest : public fake::MacTest {
protected:
    void TearDown() override {
        native_ = nil;
        MacTest::TearDown();
    }
    NSMenu* open() {
        if (native_ == nil) {
            native_ = nsMenu(menu_);
        }
        [native_.delegate menuNeedsUpdate:native_];
        return native_;
    }
    NSMenuItem* item(NSUInteger index) { return open().itemArray[index]; }

    std::shared_ptr<Menu> menu_ = std::make_shared<Menu>("title");
    NSMenu* native_ = nil;
};

TEST_F(MenuTest, carriesEveryProperty) {
    menu_->autoenablesItems = false;
    menu_->addItem({.title = "标题",
                    .image = Symbol{.name = "lock"},
                    .action = [](MenuItem&) {},
                    .keyEquivalent = "k",
                    .keyEquivalentModifiers = OptionModifier | CommandModifier,
                    .enabled = false,
                    .on = true,
                    .tag = 7,
                    .indentationLevel = 2,
                    .toolTip = "tip",
                    .subtitle = "below",
                    .alternate = true});
    menu_->addSeparator();
    NSMenuItem* native = item(0);
    EXPECT_TRUE([native.title isEqualToString:@"标题"]);
    EXPECT_NE(native.image, nil);
    EXPECT_EQ(fake::lastCall("+[NSImage imageWithSystemSymbolName:accessibilityDescription:]").object(1), nil);
    EXPECT_TRUE([native.keyEquivalent isEqualToString:@"k"]);
    EXPECT_EQ(native.keyEquivalentModifierMask, NSEventModifierFlagOption | NSEventModifierFlagCommand);
    EXPECT_FALSE(native.enabled);
    EXPECT_EQ(native.state, NSControlStateValueOn);
    EXPECT_EQ(native.tag, 7);
    EXPECT_EQ(native.indentationLevel, 2);
    EXPECT_TRUE([native.toolTip isEqualToString:@"tip"]);
    EXPECT_TRUE(native.alternate);
    EXPECT_FALSE(native_.autoenablesItems);
    EXPECT_EQ(native_.itemArray.count, 2u);
    EXPECT_EQ(fake::calls("+[NSMenuItem separatorItem]").size(), 1u);
}

TEST_F(MenuTest, asksForAnUpdateBeforeItOpens) {
    int round = 0;
    menu_->needsUpdate = [&](Menu& menu) {
        menu.removeAllItems();
        menu.addItem({.title = std::to_string(++round)});
    };
    EXPECT_EQ(round, 0);
    EXPECT_TRUE([item(0).title isEqualToString:@"1"]);
    EXPECT_TRUE([item(0).title isEqualToString:@"2"]);
    EXPECT_EQ(native_.itemArray.count, 1u);
}

TEST_F(MenuTest, itemsThatStayKeepTheirPlaceInAnOpenMenu) {
    const auto kept = menu_->addItem({.title = "before"});
    NSMenuItem* native = item(0);
    kept->title = "after";
    EXPECT_EQ(item(0), native);
    EXPECT_TRUE([native.title isEqualToString:@"after"]);
}

TEST_F(MenuTest, hostsSubmenusAndKeepsThemOverAnUpdate) {
    const auto submenu = std::make_shared<Menu>();
    bool asked = false;
    submenu->needsUpdate = [&](Menu& menu) {
        asked = true;
        menu.removeAllItems();
        menu.addItem({.title = "inner", .action = [](MenuItem&) {}});
    };
    menu_->addItem({.title = "outer", .submenu = submenu});
    NSMenu* native = item(0).submenu;
    EXPECT_FALSE(asked);
    [native.delegate menuNeedsUpdate:native];
    EXPECT_TRUE([native.itemArray.firstObject.title isEqualToString:@"inner"]);
    EXPECT_EQ(item(0).submenu, native);

    menu_->addItem({.title = "second"}); // fills the menu anew
    EXPECT_EQ(native.supermenu, nil);
    EXPECT_NE(item(0).submenu, nil);
}

TEST_F(MenuTest, choosesTheItemEvenWhenTheMenuWasFilledAnew) {
    std::string chosen;
    const auto fill = [&](Menu& menu) {
        menu.removeAllItems();
        menu.addItem({.title = "one", .action = [&](MenuItem& sender) {
                          chosen = sender.title;
                          menu_->removeAllItems();
                      }});
    };
    menu_->needsUpdate = fill;
    NSMenuItem* native = item(0);
    open();
    fake::press(native);
    EXPECT_EQ(chosen, "one");
}

TEST_F(MenuTest, aStatusItemLeavesTheBarWithItsOwner) {
    MacStatusBar bar;
    auto item = bar.createItem();
    NSStatusItem* native = nil;
    item->setMenu(menu_);
    native = fake::lastCall("-[NSStatusItem setMenu:]").receiver();
    EXPECT_NE(native.menu, nil);
    item->setMenu(nullptr);
    EXPECT_EQ(native.menu, nil);
    item = nullptr;
    EXPECT_EQ(fake::lastCall("-[NSStatusBar removeStatusItem:]").object(0), native);
}

} // namespace

} // namespace rb
