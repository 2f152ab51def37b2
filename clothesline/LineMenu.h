#pragma once

#include "platform/Desktop.h"
#include "platform/Menu.h"

#include <memory>
#include <string>

namespace rb {

class RBClothesline;
class Toasts;

// The clothesline's own menu, which the status menu hosts: built anew each time it is about to open.
class LineMenu {
public:
    LineMenu(const Desktop& desktop, RBClothesline& line, Toasts& toasts);
    LineMenu(const LineMenu&) = delete;
    LineMenu& operator=(const LineMenu&) = delete;
    ~LineMenu();

    const std::shared_ptr<Menu>& menu() const { return menu_; }

private:
    void menuNeedsUpdate(Menu& menu);
    MenuItem& addSetting(const std::string& title, const std::string& key, Menu& menu);
    static void addNote(const std::string& text, Menu& menu);
    void toggleSetting(const MenuItem& sender);
    void toggleLine();
    void clearAll();

    const Desktop& desktop_;
    RBClothesline& line_;
    Toasts& toasts_;
    std::shared_ptr<Menu> menu_;
};

} // namespace rb
