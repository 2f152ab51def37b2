#pragma once

#include "platform/Menu.h"

#include <QKeyEvent>
#include <QString>

#include <cstdint>

// Key equivalents as Linux users know them: the command key of the product's menus is Ctrl here, option is Alt,
// control is Super. Pure functions.
namespace rb {

std::uint32_t modifierFlags(Qt::KeyboardModifiers modifiers);

// "Ctrl+," or "1"; empty when the item has none.
QString keyEquivalentText(const MenuItem& item);

bool isKeyEquivalent(const QKeyEvent& event, const MenuItem& item);

} // namespace rb
