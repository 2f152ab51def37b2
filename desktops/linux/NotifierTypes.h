#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

// The structures that StatusNotifierItem and the menus that go with it put on the bus.
namespace rb {

// 32-bit ARGB in network byte order.
struct NotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;
};
using NotifierPixmaps = QList<NotifierPixmap>;

struct NotifierToolTip {
    QString iconName;
    NotifierPixmaps icon;
    QString title;
    QString text;
};

// One line of an exported menu and, where asked for, those below it.
struct ExportedItem {
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
};
struct ExportedProperties {
    int id = 0;
    QVariantMap properties;
};
using ExportedPropertiesList = QList<ExportedProperties>;

// Once before any of them is sent.
void registerNotifierTypes();

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip);
QDBusArgument& operator<<(QDBusArgument& argument, const ExportedItem& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, ExportedItem& item);
QDBusArgument& operator<<(QDBusArgument& argument, const ExportedProperties& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, ExportedProperties& item);

} // namespace rb

Q_DECLARE_METATYPE(rb::NotifierPixmap)
Q_DECLARE_METATYPE(rb::NotifierToolTip)
Q_DECLARE_METATYPE(rb::ExportedItem)
Q_DECLARE_METATYPE(rb::ExportedProperties)
