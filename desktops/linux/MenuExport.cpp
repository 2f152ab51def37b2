#include "desktops/linux/MenuExport.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/KeyEquivalent.h"
#include "desktops/linux/Pictures.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDataStream>
#include <QGuiApplication>
#include <QPixmap>
#include <QTimer>

#include <utility>

namespace rb {

namespace {

const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
constexpr int iconSide = 16;
constexpr double symbolSize = 13;

QString labelOf(const MenuItem& item) {
    // An underscore marks the letter to type; indentation has no property of its own.
    const std::string line = item.subtitle.empty() ? item.title : item.title + " — " + item.subtitle;
    const QString label = QString::fromStdString(line).replace(QLatin1Char('_'), QStringLiteral("__"));
    return QString(qsizetype{2} * item.indentationLevel, QChar(0x2002)) + label;
}

// Names of keys as GDK has them.
QString gdkKeyName(const std::string& key) {
    if (key == ",") {
        return QStringLiteral("comma");
    }
    if (key == ".") {
        return QStringLiteral("period");
    }
    return QString::fromStdString(key);
}

QList<QStringList> shortcutOf(const MenuItem& item) {
    QStringList keys;
    const auto has = [&item](std::uint32_t modifier) { return (item.keyEquivalentModifiers & modifier) != 0; };
    if (has(CommandModifier)) {
        keys << QStringLiteral("Control");
    }
    if (has(OptionModifier)) {
        keys << QStringLiteral("Alt");
    }
    if (has(ShiftModifier)) {
        keys << QStringLiteral("Shift");
    }
    if (has(ControlModifier)) {
        keys << QStringLiteral("Super");
    }
    return {keys << gdkKeyName(item.keyEquivalent)};
}

} // namespace

MenuExport::MenuExport(std::shared_ptr<Menu> menu, const QDBusConnection& bus, const QString& path,
                       const Pictures& pictures, const LinuxAppearance& appearance)
    : bus_(bus)
    , path_(path)
    , pictures_(pictures)
    , appearance_(appearance) {
    lines_[0].menu = std::move(menu);
    bus_.registerVirtualObject(path_, this);
}

MenuExport::~MenuExport() {
    bus_.unregisterObject(path_);
}

std::shared_ptr<Menu> MenuExport::menuBelow(const Line& line) const {
    return line.item ? line.item->submenu : line.menu;
}

void MenuExport::forget(const std::vector<int>& ids) {
    for (const int id : ids) {
        forget(std::exchange(lines_[id].children, {}));
        lines_.erase(id);
    }
}

void MenuExport::list(int id, bool updateFirst) {
    const std::shared_ptr<Menu> menu = menuBelow(lines_.at(id));
    if (!menu) {
        return;
    }
    if (const auto needsUpdate = menu->needsUpdate; updateFirst && needsUpdate) {
        needsUpdate(*menu);
    }
    // Items that are still there keep their numbers, so that an open menu in the host stays valid.
    std::map<const MenuItem*, int> known;
    for (const int child : std::as_const(lines_[id].children)) {
        known[lines_[child].item.get()] = child;
    }
    std::vector<int> children;
    for (const auto& item : menu->items()) {
        if (item->alternate && !children.empty()) {
            lines_[children.back()].alternates.push_back(item);
            continue;
        }
        const auto found = known.find(item.get());
        const int child = found == known.end() ? nextId_++ : found->second;
        if (found == known.end()) {
            lines_[child] = {item, menu, {}};
        } else {
            known.erase(found);
            lines_[child].alternates.clear();
        }
        children.push_back(child);
    }
    for (const auto& [item, child] : known) {
        forget({child});
    }
    lines_[id].children = children;
}

QVariantMap MenuExport::properties(const Line& line) const {
    QVariantMap map;
    if (!line.item) {
        map.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
        return map;
    }
    const MenuItem& item = *line.item;
    if (item.separator) {
        map.insert(QStringLiteral("type"), QStringLiteral("separator"));
        return map;
    }
    map.insert(QStringLiteral("label"), labelOf(item));
    map.insert(QStringLiteral("enabled"), line.menu->isEnabled(item));
    if (item.submenu) {
        map.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
    }
    if (item.on) {
        map.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
        map.insert(QStringLiteral("toggle-state"), 1);
    }
    if (!item.keyEquivalent.empty()) {
        map.insert(QStringLiteral("shortcut"), QVariant::fromValue(shortcutOf(item)));
    }
    if (!pictures_.size(item.image, symbolSize).isEmpty()) {
        const QPixmap picture =
            pictures_.pixmap(item.image, QSizeF(iconSide, iconSide), symbolSize, appearance_.theme().label, 1);
        QByteArray png;
        QBuffer buffer(&png);
        if (buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, "PNG")) {
            map.insert(QStringLiteral("icon-data"), png);
        }
    }
    return map;
}

ExportedItem MenuExport::layout(int id, int depth) {
    if (lines_.at(id).children.empty()) {
        list(id, false);
    }
    const Line& line = lines_.at(id);
    ExportedItem exported{id, properties(line), {}};
    if (depth != 0) {
        for (const int child : line.children) {
            exported.children.append(QDBusVariant(QVariant::fromValue(layout(child, depth - 1))));
        }
    }
    return exported;
}

QByteArray MenuExport::fingerprint(int id) const {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    for (const int child : lines_.at(id).children) {
        const Line& line = lines_.at(child);
        QVariantMap map = properties(line);
        map.remove(QStringLiteral("shortcut")); // doesn't change by itself, and can't be streamed
        stream << child << map;
    }
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
}

bool MenuExport::aboutToShow(int id) {
    if (!lines_.contains(id)) {
        return false;
    }
    const QByteArray before = fingerprint(id);
    list(id, true);
    if (fingerprint(id) == before) {
        return false;
    }
    ++revision_;
    return true;
}

void MenuExport::contentMayHaveChanged() {
    ++revision_;
    list(0, false);
    tellOfLayout(0);
}

void MenuExport::tellOfLayout(int id) const {
    QDBusMessage signal = QDBusMessage::createSignal(path_, menuInterface, QStringLiteral("LayoutUpdated"));
    signal << revision_ << id;
    bus_.send(signal);
}

// In a later turn, since the choice may end the program, and with it this object; but with what is held now.
void MenuExport::chooseLater(int id) {
    const std::uint32_t modifiers = modifierFlags(QGuiApplication::queryKeyboardModifiers());
    QTimer::singleShot(0, this, [this, id, modifiers] { choose(id, modifiers); });
}

void MenuExport::choose(int id, std::uint32_t modifiers) {
    const auto found = lines_.find(id);
    if (found == lines_.end() || !found->second.item || !found->second.menu->isEnabled(*found->second.item)) {
        return;
    }
    std::shared_ptr<MenuItem> item = found->second.item;
    for (const auto& alternate : found->second.alternates) {
        if (modifiers != NoModifiers && alternate->keyEquivalentModifiers == modifiers) {
            item = alternate;
        }
    }
    if (const auto action = item->action) {
        action(*item);
        // Check marks and titles follow what was chosen; the action may have ended this export too.
    }
}

bool MenuExport::answer(const QDBusMessage& message, const QList<QVariant>& results) const {
    return bus_.send(message.createReply(results));
}

bool MenuExport::handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) {
    const QString member = message.member();
    const QList<QVariant> arguments = message.arguments();
    const auto argument = [&arguments](int index) { return arguments.value(index); };

    if (message.interface() == propertiesInterface) {
        const QVariantMap all{{QStringLiteral("Version"), 3U},
                              {QStringLiteral("TextDirection"), QStringLiteral("ltr")},
                              {QStringLiteral("Status"), QStringLiteral("normal")},
                              {QStringLiteral("IconThemePath"), QStringList()}};
        if (member == QLatin1String("GetAll")) {
            return answer(message, {QVariant(all)});
        }
        const QVariant value = all.value(argument(1).toString());
        return member == QLatin1String("Get") && value.isValid() &&
               answer(message, {QVariant::fromValue(QDBusVariant(value))});
    }
    if (member == QLatin1String("GetLayout")) {
        const int id = argument(0).toInt();
        if (!lines_.contains(id)) {
            return false;
        }
        return answer(message, {revision_, QVariant::fromValue(layout(id, argument(1).toInt()))});
    }
    if (member == QLatin1String("GetGroupProperties")) {
        const auto ids = qdbus_cast<QList<int>>(argument(0));
        ExportedPropertiesList all;
        for (const auto& [id, line] : lines_) {
            if (ids.isEmpty() || ids.contains(id)) {
                all.append({id, properties(line)});
            }
        }
        return answer(message, {QVariant::fromValue(all)});
    }
    if (member == QLatin1String("GetProperty")) {
        const auto line = lines_.find(argument(0).toInt());
        if (line == lines_.end()) {
            return false;
        }
        const QVariant value = properties(line->second).value(argument(1).toString());
        return value.isValid() && answer(message, {QVariant::fromValue(QDBusVariant(value))});
    }
    if (member == QLatin1String("AboutToShow")) {
        return answer(message, {aboutToShow(argument(0).toInt())});
    }
    if (member == QLatin1String("AboutToShowGroup")) {
        QList<int> changed;
        QList<int> unknown;
        for (const int id : qdbus_cast<QList<int>>(argument(0))) {
            if (!lines_.contains(id)) {
                unknown.append(id);
            } else if (aboutToShow(id)) {
                changed.append(id);
            }
        }
        const bool answered = answer(message, {QVariant::fromValue(changed), QVariant::fromValue(unknown)});
        // Who asks for several at once, as GTK's panels do, doesn't look at what the answer says has changed.
        for (const int id : std::as_const(changed)) {
            tellOfLayout(id);
        }
        return answered;
    }
    if (member == QLatin1String("Event")) {
        answer(message, {});
        if (argument(1).toString() == QLatin1String("clicked")) {
            chooseLater(argument(0).toInt());
        }
        return true;
    }
    if (member == QLatin1String("EventGroup")) {
        const auto events = argument(0).value<QDBusArgument>();
        events.beginArray();
        while (!events.atEnd()) {
            int id = 0;
            QString name;
            QDBusVariant data;
            uint time = 0;
            events.beginStructure();
            events >> id >> name >> data >> time;
            events.endStructure();
            if (name == QLatin1String("clicked")) {
                chooseLater(id);
            }
        }
        events.endArray();
        return answer(message, {QVariant::fromValue(QList<int>())});
    }
    return false;
}

QString MenuExport::introspect(const QString& /*path*/) const {
    return QString::fromLatin1(R"xml(<interface name="com.canonical.dbusmenu">
<property name="Version" type="u" access="read"/>
<property name="TextDirection" type="s" access="read"/>
<property name="Status" type="s" access="read"/>
<property name="IconThemePath" type="as" access="read"/>
<method name="GetLayout"><arg type="i" direction="in"/><arg type="i" direction="in"/><arg type="as" direction="in"/><arg type="u" direction="out"/><arg type="(ia{sv}av)" direction="out"/></method>
<method name="GetGroupProperties"><arg type="ai" direction="in"/><arg type="as" direction="in"/><arg type="a(ia{sv})" direction="out"/></method>
<method name="GetProperty"><arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
<method name="Event"><arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="in"/><arg type="u" direction="in"/></method>
<method name="EventGroup"><arg type="a(isvu)" direction="in"/><arg type="ai" direction="out"/></method>
<method name="AboutToShow"><arg type="i" direction="in"/><arg type="b" direction="out"/></method>
<method name="AboutToShowGroup"><arg type="ai" direction="in"/><arg type="ai" direction="out"/><arg type="ai" direction="out"/></method>
<signal name="ItemsPropertiesUpdated"><arg type="a(ia{sv})"/><arg type="a(ias)"/></signal>
<signal name="LayoutUpdated"><arg type="u"/><arg type="i"/></signal>
<signal name="ItemActivationRequested"><arg type="i"/><arg type="u"/></signal>
</interface>)xml");
}

} // namespace rb
