#include "desktops/linux/MenuImport.h"

#include "desktops/linux/Bitmap.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QIcon>
#include <QImage>

#include <algorithm>
#include <utility>

namespace rb {

namespace {

const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
constexpr int patience = 3000; // milliseconds
constexpr int iconSide = 16;
constexpr qsizetype longestLabel = 400;

// An underscore marks the letter to type, two of them are one.
QString labelFrom(const QString& text) {
    QString label;
    for (qsizetype i = 0; i < std::min(text.size(), longestLabel); ++i) {
        if (text[i] != QLatin1Char('_')) {
            label += text[i];
        } else if (i + 1 < text.size() && text[i + 1] == QLatin1Char('_')) {
            label += text[i];
            ++i;
        }
    }
    return label.replace(QLatin1Char('\n'), QLatin1Char(' '));
}

Image imageFrom(const QVariantMap& properties) {
    QImage image;
    const QByteArray data = properties.value(QStringLiteral("icon-data")).toByteArray();
    if (!data.isEmpty()) {
        image = QImage::fromData(data);
    } else if (const QString name = properties.value(QStringLiteral("icon-name")).toString(); !name.isEmpty()) {
        image = QIcon::fromTheme(name).pixmap(iconSide).toImage();
    }
    if (image.isNull()) {
        return {};
    }
    return std::make_shared<const LinuxBitmap>(
        image.scaled(iconSide, iconSide, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

ExportedItem unpacked(const QDBusVariant& child) {
    const QVariant value = child.variant();
    if (value.userType() == qMetaTypeId<QDBusArgument>()) {
        const auto argument = value.value<QDBusArgument>();
        return argument.currentSignature() == QLatin1String("(ia{sv}av)") ? qdbus_cast<ExportedItem>(argument)
                                                                          : ExportedItem{};
    }
    return value.value<ExportedItem>();
}

std::shared_ptr<Menu> fill(const ExportedItem& layout, const std::function<void(int)>& choose, int levels);

MenuItem itemFrom(const ExportedItem& line, const std::function<void(int)>& choose, int levels) {
    const QVariantMap& properties = line.properties;
    MenuItem item;
    item.separator = properties.value(QStringLiteral("type")).toString() == QLatin1String("separator");
    item.title = labelFrom(properties.value(QStringLiteral("label")).toString()).toStdString();
    item.enabled = properties.value(QStringLiteral("enabled"), true).toBool();
    item.on = !properties.value(QStringLiteral("toggle-type")).toString().isEmpty() &&
              properties.value(QStringLiteral("toggle-state")).toInt() == 1;
    item.image = imageFrom(properties);
    const bool hasChildren =
        !line.children.isEmpty() ||
        properties.value(QStringLiteral("children-display")).toString() == QLatin1String("submenu");
    if (hasChildren && levels > 0) {
        item.submenu = fill(line, choose, levels - 1);
    } else if (!item.separator) {
        item.action = [choose, id = line.id](MenuItem&) { choose(id); };
    }
    return item;
}

std::shared_ptr<Menu> fill(const ExportedItem& layout, const std::function<void(int)>& choose, int levels) {
    auto menu = std::make_shared<Menu>();
    menu->autoenablesItems = false;
    for (const QDBusVariant& child : layout.children) {
        if (menu->items().size() == MenuImport::mostRows) {
            menu->addItem({.title = "…", .enabled = false});
            break;
        }
        const ExportedItem line = unpacked(child);
        if (line.properties.value(QStringLiteral("visible"), true).toBool()) {
            menu->addItem(itemFrom(line, choose, levels));
        }
    }
    return menu;
}

} // namespace

std::shared_ptr<Menu> menuFrom(const ExportedItem& layout, const std::function<void(int id)>& choose) {
    return fill(layout, choose, MenuImport::mostLevels);
}

MenuImport::MenuImport(QString service, QString path)
    : service_(std::move(service))
    , path_(std::move(path)) {
    registerNotifierTypes();
}

void MenuImport::read(std::function<void(std::shared_ptr<Menu> menu)> done) {
    // Some programs fill their menus only when they hear this; others don't know it.
    QDBusMessage call = QDBusMessage::createMethodCall(service_, path_, menuInterface, QStringLiteral("AboutToShow"));
    call << 0;
    auto* pending = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, patience), &receiver_);
    QObject::connect(pending, &QDBusPendingCallWatcher::finished, &receiver_,
                     [this, done = std::move(done)](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         readLayout(done);
                     });
}

void MenuImport::readLayout(const std::function<void(std::shared_ptr<Menu>)>& done) {
    QDBusMessage call = QDBusMessage::createMethodCall(service_, path_, menuInterface, QStringLiteral("GetLayout"));
    call << 0 << -1 << QStringList();
    auto* pending = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, patience), &receiver_);
    QObject::connect(
        pending, &QDBusPendingCallWatcher::finished, &receiver_, [this, done](QDBusPendingCallWatcher* finished) {
            const QDBusMessage reply = finished->reply();
            finished->deleteLater();
            if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("u(ia{sv}av)")) {
                return;
            }
            const auto layout = qdbus_cast<ExportedItem>(reply.arguments().at(1));
            // The menu may outlive this: what it calls goes with the address, not with us.
            done(menuFrom(layout, [service = service_, path = path_](int id) {
                QDBusMessage event =
                    QDBusMessage::createMethodCall(service, path, menuInterface, QStringLiteral("Event"));
                event << id << QStringLiteral("clicked") << QVariant::fromValue(QDBusVariant(0)) << 0U;
                QDBusConnection::sessionBus().send(event);
            }));
        });
}

} // namespace rb
