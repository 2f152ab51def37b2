#include "clothesline/CardMenu.h"

#include "clothesline/Clothesline.h"

#include <algorithm>

namespace rb {

void CardMenu::show(const RBPegItemRef& item, Point location) {
    if (!line_.contains(*item)) {
        return;
    }
    showing_ = true;
    line_.showContextMenu(build(item), location, [this] { showing_ = false; });
}

std::shared_ptr<Menu> CardMenu::build(const RBPegItemRef& item) {
    auto built = std::make_shared<Menu>();
    Menu& menu = *built;
    menu.autoenablesItems = false;
    add(menu, "复制", &CardMenu::menuCopy, item);
    add(menu, "打开", &CardMenu::menuOpen, item);
    add(menu, "快速查看", &CardMenu::menuQuickLook, item);
    add(menu, "在 Finder 中显示", &CardMenu::menuReveal, item);
    add(menu, "拷贝路径", &CardMenu::menuCopyPath, item);
    menu.addSeparator();
    if (line_.isInInbox(item->path)) {
        add(menu, "存到桌面", &CardMenu::menuSaveToDesktop, item);
        menu.addSeparator();
        add(menu, "丢弃（移到废纸篓）", &CardMenu::menuTrash, item);
    } else {
        add(menu, "取下（文件保留）", &CardMenu::menuTakeDown, item);
        add(menu, "移到废纸篓", &CardMenu::menuTrash, item);
    }
    add(menu, "取下左边全部", &CardMenu::menuTakeDownLeft, item).enabled = item != line_.items().front();
    add(menu, "取下右边全部", &CardMenu::menuTakeDownRight, item).enabled = item != line_.items().back();
    return built;
}

MenuItem& CardMenu::add(Menu& menu, const std::string& title, Action action, const RBPegItemRef& item) {
    return *menu.addItem(
        {.title = title,
         .action = [this, action](
                       MenuItem& sender) { (this->*action)(std::any_cast<RBPegItemRef>(sender.representedObject)); },
         .representedObject = item});
}

void CardMenu::menuCopy(const RBPegItemRef& item) {
    line_.actions().copyItem(item);
}

void CardMenu::menuOpen(const RBPegItemRef& item) {
    line_.actions().openItem(*item);
}

void CardMenu::menuQuickLook(const RBPegItemRef& item) {
    line_.quickLookItem(item);
}

void CardMenu::menuReveal(const RBPegItemRef& item) {
    line_.actions().revealItem(*item);
}

void CardMenu::menuCopyPath(const RBPegItemRef& item) {
    line_.actions().copyPathOf(*item);
}

void CardMenu::menuTakeDown(const RBPegItemRef& item) {
    line_.takeDown(item);
}

void CardMenu::menuTrash(const RBPegItemRef& item) {
    line_.actions().trashItem(item);
}

void CardMenu::menuSaveToDesktop(const RBPegItemRef& item) {
    line_.actions().saveToDesktop(item);
}

void CardMenu::menuTakeDownLeft(const RBPegItemRef& item) {
    const auto& items = line_.items();
    const auto found = std::find(items.begin(), items.end(), item);
    if (found != items.end()) {
        line_.takeDownItems({items.begin(), found});
    }
}

void CardMenu::menuTakeDownRight(const RBPegItemRef& item) {
    const auto& items = line_.items();
    const auto found = std::find(items.begin(), items.end(), item);
    if (found != items.end()) {
        line_.takeDownItems({found + 1, items.end()});
    }
}

} // namespace rb
