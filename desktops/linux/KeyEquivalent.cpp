#include "desktops/linux/KeyEquivalent.h"

namespace rb {

std::uint32_t modifierFlags(Qt::KeyboardModifiers modifiers) {
    std::uint32_t flags = NoModifiers;
    flags |= modifiers.testFlag(Qt::ControlModifier) ? std::uint32_t{CommandModifier} : 0U;
    flags |= modifiers.testFlag(Qt::AltModifier) ? std::uint32_t{OptionModifier} : 0U;
    flags |= modifiers.testFlag(Qt::ShiftModifier) ? std::uint32_t{ShiftModifier} : 0U;
    flags |= modifiers.testFlag(Qt::MetaModifier) ? std::uint32_t{ControlModifier} : 0U;
    return flags;
}

QString keyEquivalentText(const MenuItem& item) {
    if (item.keyEquivalent.empty()) {
        return {};
    }
    const std::uint32_t modifiers = item.keyEquivalentModifiers;
    QString text;
    if ((modifiers & ControlModifier) != 0) {
        text += QStringLiteral("Super+");
    }
    if ((modifiers & CommandModifier) != 0) {
        text += QStringLiteral("Ctrl+");
    }
    if ((modifiers & OptionModifier) != 0) {
        text += QStringLiteral("Alt+");
    }
    if ((modifiers & ShiftModifier) != 0) {
        text += QStringLiteral("Shift+");
    }
    return text + QString::fromStdString(item.keyEquivalent).toUpper();
}

bool isKeyEquivalent(const QKeyEvent& event, const MenuItem& item) {
    if (item.keyEquivalent.empty() || modifierFlags(event.modifiers()) != item.keyEquivalentModifiers) {
        return false;
    }
    const QString key = QString::fromStdString(item.keyEquivalent).toUpper();
    return key.size() == 1 && event.key() == key.at(0).unicode();
}

} // namespace rb
