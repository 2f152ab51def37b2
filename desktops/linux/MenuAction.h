#pragma once

#include "platform/Menu.h"

#include <QAction>
#include <QStyleOptionMenuItem>

#include <memory>
#include <vector>

namespace rb {

class MenuWidget;

// One line of an open menu: an item of the product's menu together with the alternates that stand in for it while
// their modifiers are held. Keeps its items alive, so choosing one stays safe when the menu is filled anew.
class MenuAction final : public QAction {
public:
    MenuAction(std::shared_ptr<MenuItem> item, const Menu& menu, MenuWidget& widget);

    // The action that a style is asked to measure or draw; null for other programs' menus.
    static const MenuAction* of(const QStyleOptionMenuItem& option);

    // The item has other contents now.
    void itemChanged(const Menu& menu);

    void addAlternate(std::shared_ptr<MenuItem> alternate) { alternates_.push_back(std::move(alternate)); }
    const std::vector<std::shared_ptr<MenuItem>>& alternates() const { return alternates_; }
    // The item itself, alternates aside.
    const MenuItem& item() const { return *item_; }
    bool isFor(const MenuItem& item) const { return item_.get() == &item; }
    // What stands there while those modifiers are held.
    const std::shared_ptr<MenuItem>& shown(std::uint32_t heldModifiers) const;
    const MenuWidget& menuWidget() const { return widget_; }

private:
    std::shared_ptr<MenuItem> item_;
    std::vector<std::shared_ptr<MenuItem>> alternates_;
    MenuWidget& widget_;
};

} // namespace rb
