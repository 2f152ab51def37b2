#pragma once

#include "motion/Image.h"
#include "platform/Keyboard.h"

#include <any>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// Menus are data: the product fills them, a desktop shows them and reports the choice. Main thread only.
namespace rb {

class Menu;

struct MenuItem {
    std::string title = {};
    Image image = {};
    // Runs when the item is chosen. An item without action and without submenu can't be chosen.
    std::function<void(MenuItem& sender)> action = {};
    std::string keyEquivalent = {}; // "," "q" "1"; empty for none
    std::uint32_t keyEquivalentModifiers = CommandModifier;
    bool enabled = true; // decides only in menus that don't enable their items by themselves
    bool on = false;     // check mark
    int tag = 0;
    int indentationLevel = 0;
    std::string toolTip = {};
    std::string subtitle = {}; // shown where the system can
    // Stands in for the item before it while the modifiers of its key equivalent are held.
    bool alternate = false;
    bool separator = false;
    std::any representedObject = {};
    // Shared: a feature fills its own menu, another menu hosts it.
    std::shared_ptr<Menu> submenu = {};
};

// Items are shared so that a feature can keep one and change it later; a desktop reads them when it opens the menu.
class Menu {
public:
    explicit Menu(std::string title = {})
        : title_(std::move(title)) {}

    const std::string& title() const { return title_; }
    const std::vector<std::shared_ptr<MenuItem>>& items() const { return items_; }
    const std::shared_ptr<MenuItem>& addItem(MenuItem item);
    void addSeparator();
    void removeAllItems() { items_.clear(); }

    // Called before the menu opens and before its key equivalents are looked up.
    std::function<void(Menu& menu)> needsUpdate;
    // With automatic enabling (the default) an item is enabled exactly when it has something to do; without it
    // the `enabled` mark alone decides.
    bool autoenablesItems = true;

    // What a user finds: whether the item can be chosen now.
    bool isEnabled(const MenuItem& item) const;

private:
    std::string title_;
    std::vector<std::shared_ptr<MenuItem>> items_;
};

} // namespace rb
