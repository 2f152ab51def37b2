#include "desktops/linux/NotifierWatcher.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMap>
#include <QThread>

#include <algorithm>
#include <utility>

namespace rb {

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString usualItemPath = QStringLiteral("/StatusNotifierItem");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString connectionName = QStringLiteral("rookbay-watcher");

struct Registered {
    NotifierAddress address;
    QString owner; // the unique name of who registered it
};

// The object on the bus. Lives and dies in the watcher's thread; `tell` carries news to the main thread.
class WatcherObject final : public QDBusVirtualObject {
public:
    using News = std::function<void(bool registered, const NotifierAddress& item)>;

    WatcherObject(const QDBusConnection& bus, News tell)
        : bus_(bus)
        , tell_(std::move(tell))
        , owners_(QString(), bus, QDBusServiceWatcher::WatchForUnregistration) {
        connect(&owners_, &QDBusServiceWatcher::serviceUnregistered, this,
                [this](const QString& owner) { ownerGone(owner); });
        bus_.registerVirtualObject(watcherPath, this);
    }
    ~WatcherObject() override { bus_.unregisterObject(watcherPath); }
    WatcherObject(const WatcherObject&) = delete;
    WatcherObject& operator=(const WatcherObject&) = delete;

    void signal(const QString& name, const QVariantList& arguments = {}) {
        QDBusMessage message = QDBusMessage::createSignal(watcherPath, watcherName, name);
        message.setArguments(arguments);
        bus_.send(message);
    }

    QString introspect(const QString& /*path*/) const override {
        return QString::fromLatin1(R"xml(<interface name="org.kde.StatusNotifierWatcher">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
<signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
<signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
<signal name="StatusNotifierHostRegistered"/>
</interface>)xml");
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QString member = message.member();
        const QString argument = message.arguments().value(0).toString();
        if (message.interface() == propertiesInterface) {
            const QVariantMap all = properties();
            if (member == QLatin1String("GetAll")) {
                return connection.send(message.createReply(QVariant(all)));
            }
            const QVariant value = all.value(message.arguments().value(1).toString());
            return member == QLatin1String("Get") && value.isValid() &&
                   connection.send(message.createReply(QVariant::fromValue(QDBusVariant(value))));
        }
        if (member == QLatin1String("RegisterStatusNotifierItem") && !argument.isEmpty()) {
            connection.send(message.createReply());
            // A bus name, or the path of an object of the sender.
            const bool isPath = argument.startsWith(QLatin1Char('/'));
            add({isPath ? message.service() : argument, isPath ? argument : usualItemPath}, message.service());
            return true;
        }
        if (member == QLatin1String("RegisterStatusNotifierHost")) {
            return connection.send(message.createReply()); // there is one already
        }
        return false;
    }

private:
    void add(const NotifierAddress& address, const QString& owner) {
        const bool known =
            std::any_of(items_.begin(), items_.end(), [&](const Registered& item) { return item.address == address; });
        if (known || items_.size() >= NotifierWatcher::mostItems) {
            return;
        }
        items_.append({address, owner});
        owners_.addWatchedService(owner);
        signal(QStringLiteral("StatusNotifierItemRegistered"), {address.service + address.path});
        tell_(true, address);
    }

    void ownerGone(const QString& owner) {
        owners_.removeWatchedService(owner);
        for (const Registered& item : std::exchange(items_, {})) {
            if (item.owner != owner) {
                items_.append(item);
                continue;
            }
            signal(QStringLiteral("StatusNotifierItemUnregistered"), {item.address.service + item.address.path});
            tell_(false, item.address);
        }
    }

    QVariantMap properties() const {
        QStringList items;
        for (const Registered& item : items_) {
            items.append(item.address.service + item.address.path);
        }
        return {{QStringLiteral("RegisteredStatusNotifierItems"), items},
                {QStringLiteral("IsStatusNotifierHostRegistered"), true},
                {QStringLiteral("ProtocolVersion"), 0}};
    }

    QDBusConnection bus_;
    News tell_;
    QDBusServiceWatcher owners_;
    QList<Registered> items_;
};

} // namespace

class NotifierWatcher::Thread final : public QThread {
public:
    explicit Thread(Listener listener)
        : listener_(std::move(listener)) {
        setObjectName(QStringLiteral("notifier-watcher"));
        inside_.moveToThread(this);
    }

    // Also before its event loop has begun, where quit() would be lost.
    void end() {
        QMetaObject::invokeMethod(
            &inside_, [this] { exit(); }, Qt::QueuedConnection);
        wait();
    }

protected:
    void run() override {
        {
            QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
            if (bus.isConnected()) {
                serve(bus);
            }
        }
        QDBusConnection::disconnectFromBus(connectionName);
    }

private:
    void serve(QDBusConnection& bus) {
        post([this, name = bus.baseService()] { listener_.begins(name); });
        WatcherObject object(bus, [this](bool registered, const NotifierAddress& item) {
            post([this, registered, item] { (registered ? listener_.registered : listener_.gone)(item); });
        });
        // Whoever has the name keeps it; should it let go, it is ours.
        bus.interface()->registerService(watcherName, QDBusConnectionInterface::QueueService,
                                         QDBusConnectionInterface::AllowReplacement);
        object.signal(QStringLiteral("StatusNotifierHostRegistered"));
        exec();
        bus.interface()->unregisterService(watcherName);
    }

    // This object lives in the main thread, which drops what comes after its end.
    void post(std::function<void()> work) { QMetaObject::invokeMethod(this, std::move(work), Qt::QueuedConnection); }

    const Listener listener_;
    QObject inside_; // lives in the thread
};

NotifierWatcher::NotifierWatcher(Listener listener)
    : thread_(std::make_unique<Thread>(std::move(listener))) {
    thread_->start();
}

NotifierWatcher::~NotifierWatcher() {
    thread_->end();
}

} // namespace rb
