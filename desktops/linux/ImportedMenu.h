#pragma once

#include "desktops/linux/NotifierTypes.h"
#include "platform/Handle.h"
#include "platform/Menu.h"

#include <QColor>
#include <QString>

#include <functional>
#include <memory>
#include <set>

namespace rb {

// What a line of another program's menu has beyond an item of ours; the item's representedObject.
struct ImportedRow {
    QChar mnemonic = {}; // in upper case; null without one
    bool radio = false;  // one of several of which one is on
    bool mixed = false;  // neither on nor off
};
// Null for items of our own menus.
const ImportedRow* importedRow(const MenuItem& item);

// Another program's menu as a menu of ours, from the layouts that it sends. Lines keep their items as long as the order
// of their menu stays, so that a menu that is open can follow. What it says is taken with limits. Main thread only.
class ImportedMenu {
public:
    // How much of a menu is shown: nobody reads more.
    static constexpr std::size_t mostRows = 1000; // of one menu
    static constexpr std::size_t mostRowsInAll = 6000;
    static constexpr int mostLevels = 8;

    struct Listener {
        // A line with this number was chosen, perhaps after the end of this object: the menu may outlive it.
        std::function<void(int id)> choose;
        // The submenu below the line with this number is about to open.
        std::function<void(int id)> aboutToShow = nullptr;
    };
    // Symbolic icons get the foreground colour.
    explicit ImportedMenu(Listener listener, const QColor& foreground = {});
    ~ImportedMenu();
    ImportedMenu(const ImportedMenu&) = delete;
    ImportedMenu& operator=(const ImportedMenu&) = delete;

    const std::shared_ptr<Menu>& root() const { return root_; }
    // What is below the line with this number, 0 for all of it; without effect when there is no such submenu.
    void take(int id, const ExportedItem& layout);
    // The program has had its chance to fill that submenu: without lines it is empty and no longer awaited.
    void setAsked(int id) { asked_.insert(id); }
    // Whether the submenu has lines that can be shown.
    bool isFilled(int id) const;

private:
    struct Taking;
    void fill(Menu& menu, const ExportedItem& layout, Taking& taking);
    void write(MenuItem& item, const ExportedItem& line, Taking& taking);

    Listener listener_;
    QColor foreground_;
    std::shared_ptr<Menu> root_;
    std::set<int> asked_;
    Lifetime lifetime_;
};

} // namespace rb
