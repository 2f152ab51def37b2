#include "menubar/MenuBarHider.h"

#include "app/DefaultsKeys.h"
#include "platform/Application.h"
#include "platform/UserDefaults.h"

#include <utility>

// The hider's settings menu and its introduction.
namespace rb {

namespace {

View introContent(std::function<void()> close) {
    StackView stack{.orientation = Orientation::Vertical,
                    .alignment = StackAlignment::Leading,
                    .spacing = 10,
                    .insets = {.top = 16, .left = 18, .bottom = 16, .right = 18}};
    stack.children.push_back(
        {.content = LabelView{.text = "隐藏不常用的菜单栏图标", .font = {.size = 14, .weight = FontWeight::Semibold}}});
    stack.children.push_back({.content = LabelView{.text = "1. 按住 ⌘，把想隐藏的图标拖到 • 的左边。\n"
                                                           "2. 点 ‹ › 收起或展开；收起后常用图标不会被刘海挤掉。\n"
                                                           "3. 展开后会按设置自动收起，右键箭头可以修改。",
                                                   .font = {.size = 12},
                                                   .color = TextColor::SecondaryLabel,
                                                   .wraps = true},
                              .width = 290});
    stack.children.push_back(
        {.content = ButtonView{.title = "知道了", .action = std::move(close), .keyEquivalent = "\r"}});
    return {.content = std::move(stack)};
}

} // namespace

void RBMenuBarHider::addItem(Menu& menu, const std::string& title, void (RBMenuBarHider::*action)()) {
    // A menu may stay open longer than the hider lives.
    menu.addItem({.title = title, .action = lifetime_.guard([this, action](MenuItem&) { (this->*action)(); })});
}

void RBMenuBarHider::addDelay(Menu& menu, const std::string& title, int seconds) {
    menu.addItem({.title = title,
                  .action = lifetime_.guard([this](MenuItem& sender) { setDelay(sender.tag); }),
                  .on = seconds == desktop_.userDefaults.integerForKey(DefaultsKey::MenuBarHiderDelay),
                  .tag = seconds,
                  .indentationLevel = 1});
}

void RBMenuBarHider::fillSettingsMenu(Menu& menu) {
    menu.removeAllItems();
    addItem(menu, "折叠菜单栏图标", &RBMenuBarHider::toggleEnabled);
    menu.items().back()->on = enabled();
    if (enabled()) {
        addItem(menu, collapsed_ ? "展开隐藏的图标" : "立即收起", &RBMenuBarHider::toggleNow);
        menu.items().back()->image = Symbol{.name = collapsed_ ? "chevron.left" : "chevron.right"};
        if (!desktop_.statusBar.longItemsPushOthersOut()) {
            menu.addItem({.title = "图标在别的面板里，Rook Bay 无法移动或隐藏它们", .indentationLevel = 1});
        }
        menu.addSeparator();
        menu.addItem({.title = "自动收起", .enabled = false});
        addDelay(menu, "5 秒后", 5);
        addDelay(menu, "10 秒后", 10);
        addDelay(menu, "30 秒后", 30);
        addDelay(menu, "不按时间收起", 0);
        addItem(menu, "鼠标离开菜单栏后收起", &RBMenuBarHider::toggleMouseLeave);
        menu.items().back()->indentationLevel = 1;
        menu.items().back()->on = desktop_.userDefaults.boolForKey(DefaultsKey::MenuBarHiderCollapseOnLeave);
    }
    menu.addSeparator();
    addItem(menu, "怎么隐藏图标？", &RBMenuBarHider::showIntro);
}

void RBMenuBarHider::showIntro() {
    introTimer_.reset();
    if (!enabled()) {
        desktop_.userDefaults.setObject(DefaultsKey::MenuBarHiderEnabled, true);
        install();
        introTimer_.reset(); // here it comes
    } else {
        expand();
    }
    stopAutoCollapse();
    desktop_.userDefaults.setObject(DefaultsKey::MenuBarHiderIntroShown, true);
    if (!control_ || !control_->frame()) {
        return;
    }
    desktop_.application.activateIgnoringOtherApps();
    introPopover_.reset(); // one that is shown already
    introPopover_ = control_->showPopover(
        {.content = introContent([this] { closeIntro(); }), .didClose = [this] { popoverDidClose(); }});
}

void RBMenuBarHider::closeIntro() {
    if (introPopover_) {
        introPopover_->close();
    }
}

void RBMenuBarHider::popoverDidClose() {
    // It is in the middle of its own call, so its memory goes a turn later.
    desktop_.runLoop.post([gone = std::shared_ptr<Popover>(std::move(introPopover_))] {});
    if (!collapsed_ && control_->isVisible()) {
        startAutoCollapse();
    }
}

} // namespace rb
