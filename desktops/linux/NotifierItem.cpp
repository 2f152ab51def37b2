#include "desktops/linux/NotifierItem.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/MenuExport.h"
#include "desktops/linux/MenuWidget.h"
#include "desktops/linux/NotifierTypes.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QPainter>
#include <QTimer>
#include <QtEndian>

#include <utility>

namespace rb {

namespace {

const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/MenuBar");
const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

// The sizes that hosts commonly show; they take the nearest.
constexpr int iconSizes[] = {22, 32, 48};

const char* const propertyNames[] = {"Category", "Id",         "Title",   "Status",     "WindowId",
                                     "IconName", "IconPixmap", "ToolTip", "ItemIsMenu", "Menu"};

// Every program item speaks on a connection of its own, since all of them live under the same path.
QDBusConnection connectionFor(unsigned number) {
    return number == 1 ? QDBusConnection::sessionBus()
                       : QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                                       QStringLiteral("rookbay-item-%1").arg(number));
}

// The host doesn't say how dark its panel is, so the picture carries an edge of the opposite lightness.
QImage iconFor(const Pictures& pictures, const Image& image, int pixels, bool dark) {
    const QColor front = dark ? QColor(255, 255, 255) : QColor(48, 48, 52);
    const QColor edge = dark ? QColor(0, 0, 0, 70) : QColor(255, 255, 255, 120);
    const QSizeF size(pixels, pixels);
    const double symbolSize = pixels * 0.8;
    const QPixmap rim = pictures.pixmap(image, size, symbolSize, edge, 1);
    const QPixmap glyph = pictures.pixmap(image, size, symbolSize, front, 1);
    QImage icon(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    for (const QPoint offset : {QPoint(-1, 0), QPoint(1, 0), QPoint(0, -1), QPoint(0, 1)}) {
        painter.drawPixmap(offset, rim);
    }
    painter.drawPixmap(0, 0, glyph);
    painter.end();
    return icon.convertToFormat(QImage::Format_ARGB32);
}

NotifierPixmap pixmapOf(const QImage& image) {
    NotifierPixmap pixmap{image.width(), image.height(), {}};
    pixmap.bytes.resize(qsizetype{4} * image.width() * image.height());
    auto* target = reinterpret_cast<uchar*>(pixmap.bytes.data());
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x, target += 4) {
            qToBigEndian<quint32>(line[x], target);
        }
    }
    return pixmap;
}

} // namespace

NotifierItem::NotifierItem(LinuxStatusItem& item, unsigned number, const Pictures& pictures,
                           const LinuxAppearance& appearance)
    : item_(item)
    , number_(number)
    , pictures_(pictures)
    , appearance_(appearance)
    , bus_(connectionFor(number))
    , name_(QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(QCoreApplication::applicationPid()).arg(number)) {
    registerNotifierTypes();
    bus_.registerVirtualObject(itemPath, this);
    menuChanged();
    registerWithWatcher();
}

NotifierItem::~NotifierItem() {
    export_.reset();
    bus_.unregisterObject(itemPath);
    QDBusMessage release =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ReleaseName"));
    release << name_;
    bus_.send(release);
    if (number_ != 1) {
        QDBusConnection::disconnectFromBus(bus_.name());
    }
}

void NotifierItem::registerWithWatcher() {
    // Both in one go: the bus answers in order, so nothing needs to be waited for.
    constexpr uint doNotQueue = 4;
    QDBusMessage own =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    own << name_ << doNotQueue;
    bus_.send(own);
    QDBusMessage call = QDBusMessage::createMethodCall(watcherService, QStringLiteral("/StatusNotifierWatcher"),
                                                       watcherService, QStringLiteral("RegisterStatusNotifierItem"));
    call << name_;
    bus_.send(call);
}

void NotifierItem::emitSignal(const QString& name) {
    bus_.send(QDBusMessage::createSignal(itemPath, itemInterface, name));
}

void NotifierItem::imageChanged() {
    emitSignal(QStringLiteral("NewIcon"));
}

void NotifierItem::toolTipChanged() {
    emitSignal(QStringLiteral("NewToolTip"));
    if (export_) {
        export_->contentMayHaveChanged();
    }
}

void NotifierItem::menuChanged() {
    menu_.reset();
    export_.reset();
    if (item_.menu()) {
        export_ = std::make_unique<MenuExport>(item_.menu(), bus_, menuPath, pictures_, appearance_);
    }
}

QVariant NotifierItem::property(const QString& name) const {
    const auto* symbol = std::get_if<Symbol>(&item_.image());
    if (name == QLatin1String("Category")) {
        return QStringLiteral("ApplicationStatus");
    }
    if (name == QLatin1String("Id")) {
        return QString::fromStdString(item_.name() == "RookBay" ? "rookbay" : item_.name());
    }
    if (name == QLatin1String("Title")) {
        const bool described = symbol && !symbol->accessibilityDescription.empty();
        return described ? QString::fromStdString(symbol->accessibilityDescription) : QStringLiteral("Rook Bay");
    }
    if (name == QLatin1String("Status")) {
        return QStringLiteral("Active");
    }
    if (name == QLatin1String("WindowId")) {
        return 0;
    }
    if (name == QLatin1String("IconName")) {
        return QString();
    }
    if (name == QLatin1String("IconPixmap")) {
        NotifierPixmaps pixmaps;
        for (const int size : iconSizes) {
            pixmaps.append(pixmapOf(iconFor(pictures_, item_.image(), size, appearance_.isDark())));
        }
        return QVariant::fromValue(pixmaps);
    }
    if (name == QLatin1String("ToolTip")) {
        // Hosts read markup in it.
        return QVariant::fromValue(
            NotifierToolTip{{}, {}, QString::fromStdString(item_.toolTip()).toHtmlEscaped(), {}});
    }
    if (name == QLatin1String("ItemIsMenu")) {
        return item_.menu() != nullptr;
    }
    if (name == QLatin1String("Menu")) {
        return QVariant::fromValue(QDBusObjectPath(export_ ? menuPath : QStringLiteral("/NO_DBUSMENU")));
    }
    return {};
}

bool NotifierItem::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const QList<QVariant> arguments = message.arguments();
    const QString member = message.member();
    if (message.interface() == propertiesInterface) {
        if (member == QLatin1String("Get") && arguments.size() == 2) {
            const QVariant value = property(arguments[1].toString());
            if (!value.isValid()) {
                return false;
            }
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(value))));
            return true;
        }
        if (member == QLatin1String("GetAll")) {
            QVariantMap all;
            for (const char* name : propertyNames) {
                all.insert(QLatin1String(name), property(QLatin1String(name)));
            }
            connection.send(message.createReply(QVariant(all)));
            return true;
        }
        return false;
    }
    const bool opens = member == QLatin1String("ContextMenu") || member == QLatin1String("Activate") ||
                       member == QLatin1String("SecondaryActivate");
    if (opens && arguments.size() == 2) {
        connection.send(message.createReply());
        clicked(member, {arguments[0].toInt(), arguments[1].toInt()});
        return true;
    }
    if (member == QLatin1String("Scroll") || member == QLatin1String("ProvideXdgActivationToken")) {
        connection.send(message.createReply());
        return true;
    }
    return false;
}

// Hosts that can't draw the menu say where the icon is.
void NotifierItem::clicked(const QString& method, QPoint place) {
    lastClick_ = place;
    if (item_.menu()) {
        openMenu(item_.menu());
    } else if (method != QLatin1String("SecondaryActivate")) {
        item_.clicked({.rightButton = method == QLatin1String("ContextMenu")});
    }
}

void NotifierItem::popUpMenu(std::shared_ptr<Menu> menu) {
    openMenu(menu);
}

void NotifierItem::openMenu(const std::shared_ptr<Menu>& menu) {
    if (!menu_ || shownMenu_ != menu) {
        shownMenu_ = menu;
        menu_ = std::make_unique<MenuWidget>(menu, pictures_);
    }
    menu_->openBeside(QRect(lastClick_, QSize(1, 1)));
}

QString NotifierItem::introspect(const QString& /*path*/) const {
    return QString::fromLatin1(R"xml(<interface name="org.kde.StatusNotifierItem">
<property name="Category" type="s" access="read"/>
<property name="Id" type="s" access="read"/>
<property name="Title" type="s" access="read"/>
<property name="Status" type="s" access="read"/>
<property name="WindowId" type="i" access="read"/>
<property name="IconName" type="s" access="read"/>
<property name="IconPixmap" type="a(iiay)" access="read"/>
<property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
<property name="ItemIsMenu" type="b" access="read"/>
<property name="Menu" type="o" access="read"/>
<method name="ContextMenu"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
<method name="Activate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
<method name="SecondaryActivate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
<method name="Scroll"><arg name="delta" type="i" direction="in"/><arg name="orientation" type="s" direction="in"/></method>
<signal name="NewIcon"/>
<signal name="NewToolTip"/>
</interface>)xml");
}

} // namespace rb
