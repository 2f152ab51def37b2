#pragma once

#include "clothesline/PegItem.h"
#include "platform/Menu.h"

#include <memory>
#include <string>

namespace rb {

class RBClothesline;

// A card's context menu.
class CardMenu {
public:
    explicit CardMenu(RBClothesline& line)
        : line_(line) {}

    // At a place in the line's root view. Nothing for an item that left the line.
    void show(const RBPegItemRef& item, Point location);
    // While it is up the line stays down.
    bool isShowing() const { return showing_; }

private:
    using Action = void (CardMenu::*)(const RBPegItemRef& item);

    std::shared_ptr<Menu> build(const RBPegItemRef& item);
    MenuItem& add(Menu& menu, const std::string& title, Action action, const RBPegItemRef& item);

    void menuCopy(const RBPegItemRef& item);
    void menuOpen(const RBPegItemRef& item);
    void menuQuickLook(const RBPegItemRef& item);
    void menuReveal(const RBPegItemRef& item);
    void menuCopyPath(const RBPegItemRef& item);
    void menuTakeDown(const RBPegItemRef& item);
    void menuTrash(const RBPegItemRef& item);
    void menuSaveToDesktop(const RBPegItemRef& item);
    void menuTakeDownLeft(const RBPegItemRef& item);
    void menuTakeDownRight(const RBPegItemRef& item);

    RBClothesline& line_;
    bool showing_ = false;
};

} // namespace rb
