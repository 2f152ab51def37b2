// Another desktop's status notifier, in a process of its own as there: a watcher that items register with, and a host
// that reads an item's menu and chooses from it.
//   notifier-host watch                       until it is killed; "registered SERVICE PATH TIME" a line
//   notifier-host facts SERVICE PATH          "PROPERTY=TEXT" lines
//   notifier-host menu SERVICE PATH           "LABEL" lines, disabled ones with "- " before, separators as "--"
//   notifier-host choose SERVICE PATH LABEL   as a click on that item of the menu

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QRegularExpression>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

constexpr const char* watcherService = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* menuInterface = "com.canonical.dbusmenu";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

void tell(const QString& line) {
    std::puts(qUtf8Printable(line));
    std::fflush(stdout);
}

class Watcher final : public QDBusVirtualObject {
public:
    Watcher() {
        gone_.setConnection(QDBusConnection::sessionBus());
        gone_.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
        connect(&gone_, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString& service) {
            items_.removeIf([&](const QString& item) { return item.startsWith(service + "/"); });
            tell("gone " + service);
        });
    }

    QString introspect(const QString& /*path*/) const override {
        return "<interface name=\"org.kde.StatusNotifierWatcher\">"
               "<method name=\"RegisterStatusNotifierItem\"><arg type=\"s\" direction=\"in\"/></method>"
               "<method name=\"RegisterStatusNotifierHost\"><arg type=\"s\" direction=\"in\"/></method>"
               "<property name=\"IsStatusNotifierHostRegistered\" type=\"b\" access=\"read\"/>"
               "<property name=\"ProtocolVersion\" type=\"i\" access=\"read\"/>"
               "<property name=\"RegisteredStatusNotifierItems\" type=\"as\" access=\"read\"/>"
               "<signal name=\"StatusNotifierItemRegistered\"><arg type=\"s\"/></signal>"
               "<signal name=\"StatusNotifierHostRegistered\"/></interface>";
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == "RegisterStatusNotifierItem") {
            // The argument is a bus name, or the path of an object of the sender.
            const QString argument = message.arguments().value(0).toString();
            const bool isPath = argument.startsWith('/');
            const QString service = isPath ? message.service() : argument;
            const QString path = isPath ? argument : "/StatusNotifierItem";
            items_.append(service + path);
            gone_.addWatchedService(service);
            const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
            tell("registered " + service + " " + path + " " + QString::number(now.count(), 'f', 6));
            connection.send(message.createReply());
            QDBusMessage signal =
                QDBusMessage::createSignal(watcherPath, watcherService, "StatusNotifierItemRegistered");
            connection.send(signal << service + path);
            return true;
        }
        if (message.member() == "RegisterStatusNotifierHost") {
            connection.send(message.createReply());
            return true;
        }
        const QVariantMap properties{{"IsStatusNotifierHostRegistered", true},
                                     {"ProtocolVersion", 0},
                                     {"RegisteredStatusNotifierItems", items_}};
        if (message.interface() == propertiesInterface && message.member() == "Get") {
            const QVariant value = properties.value(message.arguments().value(1).toString());
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(value))));
            return true;
        }
        if (message.interface() == propertiesInterface && message.member() == "GetAll") {
            connection.send(message.createReply(QVariant(properties)));
            return true;
        }
        return false;
    }

private:
    QStringList items_;
    QDBusServiceWatcher gone_;
};

struct MenuNode {
    int id = 0;
    QVariantMap properties;
    QList<MenuNode> children;
};

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNode& node) {
    argument.beginStructure();
    argument >> node.id >> node.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        MenuNode parsed;
        child.variant().value<QDBusArgument>() >> parsed;
        node.children.append(parsed);
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

// An item as a host sees it.
class Item {
public:
    Item(QString service, QString path)
        : service_(std::move(service))
        , path_(std::move(path)) {}

    QVariant property(const QString& name) const {
        const QDBusMessage answer = call(path_, propertiesInterface, "Get", {itemInterface, name});
        return answer.arguments().value(0).value<QDBusVariant>().variant();
    }

    MenuNode menu() const {
        call(menuPath(), menuInterface, "AboutToShow", {0});
        const QDBusMessage answer = call(menuPath(), menuInterface, "GetLayout", {0, -1, QStringList()});
        MenuNode root;
        if (answer.arguments().size() == 2) {
            answer.arguments().at(1).value<QDBusArgument>() >> root;
        }
        return root;
    }

    void choose(int id) const {
        call(menuPath(), menuInterface, "Event",
             {id, QString("clicked"), QVariant::fromValue(QDBusVariant(QString())), QVariant::fromValue(0U)});
    }

private:
    QString menuPath() const { return property("Menu").value<QDBusObjectPath>().path(); }

    QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments) const {
        QDBusMessage message = QDBusMessage::createMethodCall(service_, path, interface, method);
        message.setArguments(arguments);
        QDBusMessage answer = QDBusConnection::sessionBus().call(message, QDBus::Block, 3000);
        if (answer.type() == QDBusMessage::ErrorMessage) {
            tell("error: " + method + ": " + answer.errorMessage());
            std::exit(1); // NOLINT(concurrency-mt-unsafe): one thread
        }
        return answer;
    }

    QString service_;
    QString path_;
};

QString label(const MenuNode& node) {
    // A single underscore marks a mnemonic.
    QString text = node.properties.value("label").toString();
    return text.remove(QRegularExpression("_(?!_)"));
}

void print(const MenuNode& node, const QString& indentation) {
    for (const MenuNode& child : node.children) {
        if (child.properties.value("type").toString() == "separator") {
            tell(indentation + "--");
            continue;
        }
        const bool enabled = child.properties.value("enabled", true).toBool();
        tell(indentation + (enabled ? "" : "- ") + label(child));
        print(child, indentation + "    ");
    }
}

std::optional<int> find(const MenuNode& node, const QString& wanted) {
    for (const MenuNode& child : node.children) {
        if (label(child) == wanted) {
            return child.id;
        }
        if (const auto found = find(child, wanted)) {
            return found;
        }
    }
    return std::nullopt;
}

void printFacts(const Item& item) {
    for (const char* name : {"Id", "Title", "Status", "IconName", "ItemIsMenu"}) {
        tell(QString(name) + "=" + item.property(name).toString());
    }
    int pixmaps = 0;
    const auto pictures = item.property("IconPixmap").value<QDBusArgument>();
    pictures.beginArray();
    while (!pictures.atEnd()) {
        int width = 0;
        int height = 0;
        QByteArray pixels;
        pictures.beginStructure();
        pictures >> width >> height >> pixels;
        pictures.endStructure();
        pixmaps += width > 0 && pixels.size() == 4 * width * height ? 1 : 0;
    }
    pictures.endArray();
    tell("pictures=" + QString::number(pixmaps));
    QString icon;
    QString title;
    QString text;
    const auto toolTip = item.property("ToolTip").value<QDBusArgument>();
    toolTip.beginStructure();
    toolTip >> icon;
    toolTip.beginArray();
    while (!toolTip.atEnd()) {
        int width = 0;
        int height = 0;
        QByteArray pixels;
        toolTip.beginStructure();
        toolTip >> width >> height >> pixels;
        toolTip.endStructure();
    }
    toolTip.endArray();
    toolTip >> title >> text;
    toolTip.endStructure();
    tell("ToolTip=" + title + text);
}

// As a panel does that comes up while another watcher is there.
bool takeOver(const QDBusConnection& bus) {
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply = bus.interface()->registerService(
        watcherService, QDBusConnectionInterface::ReplaceExistingService, QDBusConnectionInterface::AllowReplacement);
    return reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (arguments.value(1) == "watch") {
        Watcher watcher;
        if (!bus.registerVirtualObject(watcherPath, &watcher) || !takeOver(bus)) {
            tell("error: cannot be the watcher");
            return 1;
        }
        tell("watching");
        bus.send(QDBusMessage::createSignal(watcherPath, watcherService, "StatusNotifierHostRegistered"));
        return application.exec();
    }
    const Item item(arguments.value(2), arguments.value(3));
    if (arguments.value(1) == "facts") {
        printFacts(item);
        return 0;
    }
    const MenuNode menu = item.menu();
    if (arguments.value(1) == "menu") {
        print(menu, "");
        return 0;
    }
    const auto id = find(menu, arguments.value(4));
    if (!id) {
        tell("error: no such item");
        return 1;
    }
    item.choose(*id);
    return 0;
}
