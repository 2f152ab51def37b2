#include "desktops/linux/ThemeIcons.h"

#include "desktops/linux/GtkSettings.h"

namespace rb {

namespace {

void chooseTheme() {
    const auto hasIcons = [] { return QIcon::hasThemeIcon(QStringLiteral("text-x-generic")); };
    if (hasIcons()) {
        return;
    }
    if (const QString theme = GtkSettings::ofSession().iconTheme; !theme.isEmpty()) {
        QIcon::setThemeName(theme);
    }
    if (hasIcons() || !QIcon::fallbackThemeName().isEmpty()) {
        return;
    }
    for (const char* name : {"Adwaita", "breeze", "Papirus", "elementary-xfce", "Yaru", "gnome"}) {
        QIcon::setFallbackThemeName(QString::fromLatin1(name));
        if (hasIcons()) {
            return;
        }
    }
}

} // namespace

QIcon iconFromTheme(const QString& name, const QString& otherwise) {
    static const bool chosen = (chooseTheme(), true);
    (void)chosen;
    QIcon icon = QIcon::fromTheme(name);
    return icon.isNull() && !otherwise.isEmpty() ? QIcon::fromTheme(otherwise) : icon;
}

} // namespace rb
