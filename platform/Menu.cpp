#include "platform/Menu.h"

#include <utility>

namespace rb {

const std::shared_ptr<MenuItem>& Menu::addItem(MenuItem item) {
    return items_.emplace_back(std::make_shared<MenuItem>(std::move(item)));
}

void Menu::addSeparator() {
    MenuItem item;
    item.separator = true;
    addItem(std::move(item));
}

bool Menu::isEnabled(const MenuItem& item) const {
    if (item.separator) {
        return false;
    }
    if (autoenablesItems) {
        return item.submenu != nullptr || item.action != nullptr;
    }
    return item.enabled;
}

} // namespace rb
