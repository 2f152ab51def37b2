#include "desktops/linux/GtkSettings.h"

#include <QFile>
#include <QStandardPaths>
#include <QStringList>

namespace rb {

namespace {

bool isDarkThemeName(const QString& name) {
    return name.endsWith(QStringLiteral("-dark"), Qt::CaseInsensitive) ||
           name.endsWith(QStringLiteral(":dark"), Qt::CaseInsensitive);
}

// "Noto Sans Bold 10" names a family, styles and a size; what isn't the family is cut off from the end.
QString familyOf(const QString& fontName) {
    static const QStringList styles{QStringLiteral("bold"),   QStringLiteral("italic"),   QStringLiteral("medium"),
                                    QStringLiteral("light"),  QStringLiteral("semibold"), QStringLiteral("regular"),
                                    QStringLiteral("normal"), QStringLiteral("book"),     QStringLiteral("condensed")};
    QStringList words = fontName.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    bool isSize = false;
    if (!words.isEmpty()) {
        words.last().toDouble(&isSize);
    }
    if (isSize) {
        words.removeLast();
    }
    while (words.size() > 1 && styles.contains(words.last().toLower())) {
        words.removeLast();
    }
    return words.join(QLatin1Char(' ')).remove(QLatin1Char(','));
}

} // namespace

GtkSettings GtkSettings::parse(const QString& settingsIni) {
    GtkSettings settings;
    bool inSettings = false;
    for (const QString& raw : settingsIni.split(QLatin1Char('\n'))) {
        const QString line = raw.trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inSettings = line == QStringLiteral("[Settings]");
            continue;
        }
        const auto equals = line.indexOf(QLatin1Char('='));
        if (!inSettings || equals < 1) {
            continue;
        }
        const QString key = line.left(equals).trimmed();
        const QString value = line.mid(equals + 1).trimmed();
        if (key == QStringLiteral("gtk-application-prefer-dark-theme")) {
            const bool dark =
                value == QStringLiteral("1") || value.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0;
            settings.prefersDark = settings.prefersDark.value_or(false) || dark;
        } else if (key == QStringLiteral("gtk-theme-name")) {
            settings.prefersDark = settings.prefersDark.value_or(false) || isDarkThemeName(value);
        } else if (key == QStringLiteral("gtk-font-name")) {
            settings.fontFamily = familyOf(value);
        } else if (key == QStringLiteral("gtk-icon-theme-name")) {
            settings.iconTheme = value;
        }
    }
    return settings;
}

GtkSettings GtkSettings::ofSession() {
    GtkSettings settings;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    for (const char* version : {"/gtk-4.0/settings.ini", "/gtk-3.0/settings.ini"}) {
        QFile file(folder + QLatin1String(version));
        if (!file.open(QIODevice::ReadOnly)) {
            continue;
        }
        constexpr qint64 largest = 65536;
        const GtkSettings read = parse(QString::fromUtf8(file.read(largest)));
        if (!settings.prefersDark) {
            settings.prefersDark = read.prefersDark;
        }
        if (settings.fontFamily.isEmpty()) {
            settings.fontFamily = read.fontFamily;
        }
        if (settings.iconTheme.isEmpty()) {
            settings.iconTheme = read.iconTheme;
        }
    }
    const QString forced = qEnvironmentVariable("GTK_THEME");
    if (!forced.isEmpty()) {
        settings.prefersDark = isDarkThemeName(forced);
    }
    return settings;
}

} // namespace rb
