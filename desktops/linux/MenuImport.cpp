#include "desktops/linux/MenuImport.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <utility>

namespace rb {

namespace {

const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
// In milliseconds.
constexpr int patience = 3000;
constexpr int patienceBefore = 1000; // for the answer whether something changes before it opens
constexpr int shortestGap = 50;

void sendEvent(const QString& service, const QString& path, int id, const QString& name) {
    QDBusMessage event = QDBusMessage::createMethodCall(service, path, menuInterface, QStringLiteral("Event"));
    event << id << name << QVariant::fromValue(QDBusVariant(0)) << 0U;
    event.setAutoStartService(false);
    QDBusConnection::sessionBus().send(event);
}

} // namespace

MenuImport::MenuImport(Source source, Listener listener)
    : source_(std::move(source))
    , listener_(std::move(listener))
    // A choice is told when the menu has closed and this may be gone.
    , menu_({.choose = [service = source_.service,
                        path = source_.path](int id) { sendEvent(service, path, id, QStringLiteral("clicked")); },
             .aboutToShow =
                 [this](int id) {
                     tell(id, QStringLiteral("opened"));
                     aboutToShow(id, patience);
                 }},
            source_.foreground) {
    pause_.setSingleShot(true);
    QObject::connect(&pause_, &QTimer::timeout, &receiver_, [this] { readNext(); });
    const auto changes = [this](const char* name) {
        return std::make_unique<BusSignal>(
            BusSignal::Source{source_.service, source_.path, menuInterface, QLatin1String(name)},
            [this](const QDBusMessage& message) {
                const bool layout = message.member() == QLatin1String("LayoutUpdated");
                if (open_) {
                    want(layout ? message.arguments().value(1).toInt() : 0);
                }
            });
    };
    layoutUpdated_ = changes("LayoutUpdated");
    propertiesUpdated_ = changes("ItemsPropertiesUpdated");
    aboutToShow(0, patienceBefore);
}

MenuImport::~MenuImport() {
    if (open_) {
        tell(0, QStringLiteral("closed"));
    }
}

void MenuImport::tell(int id, const QString& event) const {
    sendEvent(source_.service, source_.path, id, event);
}

// Some programs fill their menus only when they hear this; others don't know it.
void MenuImport::aboutToShow(int id, int limit) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(source_.service, source_.path, menuInterface, QStringLiteral("AboutToShow"));
    call << id;
    call.setAutoStartService(false);
    auto* pending = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, limit), &receiver_);
    QObject::connect(pending, &QDBusPendingCallWatcher::finished, &receiver_,
                     [this, id](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         menu_.setAsked(id);
                         const bool changes = finished->reply().arguments().value(0).toBool();
                         if (changes || !menu_.isFilled(id)) {
                             want(id);
                         }
                     });
}

void MenuImport::want(int id) {
    wanted_.insert(id);
    readNext();
}

void MenuImport::readNext() {
    if (reading_ || pause_.isActive() || wanted_.empty()) {
        return;
    }
    const int id = *wanted_.begin();
    if (id == 0) {
        wanted_.clear();
    } else {
        wanted_.erase(id);
    }
    reading_ = true;
    QDBusMessage call =
        QDBusMessage::createMethodCall(source_.service, source_.path, menuInterface, QStringLiteral("GetLayout"));
    call << id << -1 << QStringList();
    call.setAutoStartService(false);
    auto* pending = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, patience), &receiver_);
    QObject::connect(pending, &QDBusPendingCallWatcher::finished, &receiver_,
                     [this, id](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         reading_ = false;
                         pause_.start(shortestGap);
                         took(id, finished->reply());
                     });
}

void MenuImport::took(int id, const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("u(ia{sv}av)")) {
        return; // what it said before stays
    }
    menu_.take(id, qdbus_cast<ExportedItem>(reply.arguments().at(1)));
    if (!std::exchange(open_, true)) {
        tell(0, QStringLiteral("opened"));
        listener_.read();
    } else {
        listener_.changed();
    }
}

} // namespace rb
