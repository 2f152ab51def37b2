#pragma once

#include "platform/Menu.h"

#include <cstdint>
#include <memory>
#include <string>

// How a user walks through menus: opening one lets it update itself first, and only what is shown and enabled can be
// chosen. What can't be done throws ImpossibleAct with the reason.
namespace rb::menus {

void open(Menu& menu);

// The item with that title in the open menu or, depth first, in its submenus, which open on the way. Null when
// there is none. Of alternates only the one that the held modifiers call for is found.
std::shared_ptr<MenuItem> findItem(Menu& menu, const std::string& title, std::uint32_t heldModifiers = NoModifiers);

// Chooses by a click, the modifiers held.
void choose(Menu& menu, const std::string& title, std::uint32_t heldModifiers = NoModifiers);

// Presses a key while the menu is open.
void chooseByKey(Menu& menu, const std::string& key, std::uint32_t modifiers);

} // namespace rb::menus
