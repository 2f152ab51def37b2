#include "desktops/virtual/Menus.h"

#include "desktops/virtual/Contract.h"

namespace rb::menus {

namespace {

struct Found {
    Menu* menu = nullptr;
    std::shared_ptr<MenuItem> item;
};

// An alternate shows, instead of the item before it, exactly while its modifiers are held.
bool isShown(const Menu& menu, std::size_t index, std::uint32_t held) {
    const auto& items = menu.items();
    if (items[index]->alternate) {
        return held != NoModifiers && items[index]->keyEquivalentModifiers == held;
    }
    for (std::size_t next = index + 1; next < items.size() && items[next]->alternate; ++next) {
        if (held != NoModifiers && items[next]->keyEquivalentModifiers == held) {
            return false;
        }
    }
    return true;
}

Found find(Menu& menu, const std::string& title, std::uint32_t held) {
    const auto& items = menu.items();
    for (std::size_t index = 0; index < items.size(); ++index) {
        if (!items[index]->separator && items[index]->title == title && isShown(menu, index, held)) {
            return {&menu, items[index]};
        }
    }
    for (std::size_t index = 0; index < items.size(); ++index) {
        const auto item = items[index];
        if (item->submenu && menu.isEnabled(*item)) {
            open(*item->submenu);
            if (Found found = find(*item->submenu, title, held); found.item) {
                return found;
            }
        }
    }
    return {};
}

void act(const Menu& menu, const std::shared_ptr<MenuItem>& item) {
    if (!menu.isEnabled(*item)) {
        throw ImpossibleAct("the menu item \"" + item->title + "\" is disabled");
    }
    if (!item->action) {
        throw ImpossibleAct("the menu item \"" + item->title + "\" does nothing when chosen");
    }
    const auto action = item->action; // the menu may be filled anew while it runs
    action(*item);
}

} // namespace

void open(Menu& menu) {
    if (menu.needsUpdate) {
        const auto needsUpdate = menu.needsUpdate;
        needsUpdate(menu);
    }
}

std::shared_ptr<MenuItem> findItem(Menu& menu, const std::string& title, std::uint32_t heldModifiers) {
    return find(menu, title, heldModifiers).item;
}

void choose(Menu& menu, const std::string& title, std::uint32_t heldModifiers) {
    const Found found = find(menu, title, heldModifiers);
    if (!found.menu || !found.item) {
        throw ImpossibleAct("there is no menu item \"" + title + "\"");
    }
    act(*found.menu, found.item);
}

void chooseByKey(Menu& menu, const std::string& key, std::uint32_t modifiers) {
    for (const auto& item : menu.items()) {
        if (!item->separator && item->keyEquivalent == key && item->keyEquivalentModifiers == modifiers) {
            act(menu, item);
            return;
        }
    }
    throw ImpossibleAct("no menu item has the key \"" + key + "\"");
}

} // namespace rb::menus
