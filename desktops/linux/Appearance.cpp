#include "desktops/linux/Appearance.h"

#include "desktops/linux/BusSignal.h"
#include "desktops/linux/GtkSettings.h"
#include "desktops/linux/Style.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QTimer>
#include <QToolTip>

#include <array>

namespace rb {

namespace {

constexpr const char* choiceKey = "LinuxAppearance";
const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceNamespace = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString accentColor = QStringLiteral("accent-color");

bool paletteLooksDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

// Values come wrapped in one or two variants, depending on the portal's version.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

// Red, green and blue from 0 to 1; anything else means that no accent is set.
QColor accentOf(const QVariant& value) {
    if (!value.canConvert<QDBusArgument>()) {
        return {};
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QStringLiteral("(ddd)")) {
        return {};
    }
    std::array<double, 3> parts{};
    argument.beginStructure();
    for (double& part : parts) {
        argument >> part;
    }
    argument.endStructure();
    for (const double part : parts) {
        if (!(part >= 0 && part <= 1)) {
            return {};
        }
    }
    return QColor::fromRgbF(static_cast<float>(parts[0]), static_cast<float>(parts[1]), static_cast<float>(parts[2]));
}

Color colorFrom(const QColor& color) {
    return {color.redF(), color.greenF(), color.blueF(), color.alphaF()};
}

QFont sessionFont(const GtkSettings& gtk) {
    QFont font = QApplication::font();
    // Without a desktop Qt knows no font of the session; then GTK's is what the user's other programs show.
    const bool unset = font.family().compare(QStringLiteral("sans serif"), Qt::CaseInsensitive) == 0 ||
                       font.family().compare(QStringLiteral("sans"), Qt::CaseInsensitive) == 0;
    if (unset && !gtk.fontFamily.isEmpty()) {
        font.setFamilies({gtk.fontFamily});
    }
    return font;
}

} // namespace

LinuxAppearance::LinuxAppearance(const UserDefaults& defaults)
    : defaults_(defaults) {
    const GtkSettings gtk = GtkSettings::ofSession();
    sessionLooksDark_ = gtk.prefersDark.value_or(paletteLooksDark(QApplication::palette()));
    auto style = std::make_unique<LinuxStyle>(theme_);
    style_ = style.get();
    QApplication::setFont(LinuxStyle::interfaceFont(sessionFont(gtk)));
    QApplication::setStyle(style.release());
    refresh();
    if (hasSessionBus()) {
        QTimer::singleShot(0, qApp, lifetime_.guard([this] { followPortal(); }));
    }
}

LinuxAppearance::~LinuxAppearance() = default;

void LinuxAppearance::refresh() {
    const std::string choice = defaults_.stringForKey(choiceKey).value_or("");
    bool dark = portalDark_.value_or(sessionLooksDark_);
    if (choice == "dark" || choice == "light") {
        dark = choice == "dark";
    }
    const Theme theme = Theme::make(dark, accent_);
    if (theme_.accent.isValid() && theme.dark == theme_.dark && theme.accent == theme_.accent) {
        return;
    }
    theme_ = theme;
    style_->setTheme(theme_);
    QApplication::setPalette(theme_.palette());
    QToolTip::setPalette(theme_.palette());
    observers_.notify();
}

void LinuxAppearance::followPortal() {
    settingChanged_ = std::make_unique<BusSignal>(
        BusSignal::Source{portalService, portalPath, portalInterface, QStringLiteral("SettingChanged")},
        [this](const QDBusMessage& message) {
            const QList<QVariant> arguments = message.arguments();
            if (arguments.size() == 3 && arguments[0].toString() == appearanceNamespace) {
                portalSaid(arguments[1].toString(), arguments[2]);
            }
        });
    askPortal(colorScheme);
    askPortal(accentColor);
}

void LinuxAppearance::askPortal(const QString& key) {
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, QStringLiteral("Read"));
    question << appearanceNamespace << key;
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), style_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     lifetime_.guard([this, key](QDBusPendingCallWatcher* finished) {
                         const QDBusMessage reply = finished->reply();
                         if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
                             portalSaid(key, reply.arguments().constFirst());
                         }
                     }));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, &QObject::deleteLater);
}

void LinuxAppearance::portalSaid(const QString& key, QVariant value) {
    value = unwrapped(std::move(value));
    if (key == colorScheme) {
        switch (value.toUInt()) {
        case 1:
            portalDark_ = true;
            break;
        case 2:
            portalDark_ = false;
            break;
        default:
            portalDark_.reset();
        }
    } else if (key == accentColor) {
        accent_ = accentOf(value);
    } else {
        return;
    }
    refresh();
}

Color LinuxAppearance::color(SystemColor color) const {
    const bool dark = theme_.dark;
    switch (color) {
    case SystemColor::Green:
        return colorFrom(dark ? QColor(0x32, 0xD7, 0x4B) : QColor(0x28, 0xB9, 0x3F));
    case SystemColor::Orange:
        return colorFrom(dark ? QColor(0xFF, 0x9F, 0x0A) : QColor(0xFF, 0x95, 0x00));
    case SystemColor::Blue:
        return colorFrom(dark ? QColor(0x0A, 0x84, 0xFF) : QColor(0x00, 0x7A, 0xFF));
    case SystemColor::ControlAccent:
        return colorFrom(theme_.accent);
    case SystemColor::ControlBackground:
        return colorFrom(theme_.controlBackground);
    case SystemColor::Label:
        return colorFrom(theme_.label);
    case SystemColor::SecondaryLabel:
        return colorFrom(theme_.secondaryLabel);
    case SystemColor::TertiaryLabel:
        return colorFrom(theme_.tertiaryLabel);
    }
    return {};
}

} // namespace rb
