#pragma once

#include "platform/Desktop.h"
#include "platform/Menu.h"

#include <memory>

namespace rb {

// Placeholder of the menu bar hider, with the small surface that the spine uses.
class RBMenuBarHider {
public:
    explicit RBMenuBarHider(const Desktop& /*desktop*/) {}

    void start() {}
    const std::shared_ptr<Menu>& settingsMenu() const { return menu_; }

private:
    std::shared_ptr<Menu> menu_ = std::make_shared<Menu>("菜单栏图标");
};

} // namespace rb
