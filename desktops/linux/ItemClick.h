#pragma once

#include "desktops/linux/KeyEquivalent.h"
#include "platform/StatusBar.h"

#include <QMouseEvent>

#include <optional>

namespace rb {

// The click that the release of a button makes on a status item; nothing for other buttons. Control is the key of that
// name here, not what key equivalents call so. Pure function.
inline std::optional<StatusItemClick> clickOf(const QMouseEvent& release) {
    if (release.button() != Qt::LeftButton && release.button() != Qt::RightButton) {
        return std::nullopt;
    }
    std::uint32_t flags = modifierFlags(release.modifiers()) & ~std::uint32_t{ControlModifier | CommandModifier};
    flags |= release.modifiers().testFlag(Qt::ControlModifier) ? std::uint32_t{ControlModifier} : 0U;
    flags |= release.modifiers().testFlag(Qt::MetaModifier) ? std::uint32_t{CommandModifier} : 0U;
    return StatusItemClick{.rightButton = release.button() == Qt::RightButton, .modifierFlags = flags};
}

} // namespace rb
