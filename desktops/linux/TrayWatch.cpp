#include "desktops/linux/TrayWatch.h"

#include "desktops/linux/BusSignal.h"
#include "desktops/linux/XConnection.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <string>
#include <utility>
#include <xcb/xfixes.h>

namespace rb {

namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace

TrayWatch::TrayWatch(XConnection& connection, std::function<void()> changed)
    : connection_(connection)
    , changed_(std::move(changed)) {
    watchTray();
    if (hasSessionBus() && QDBusConnection::sessionBus().isConnected()) {
        watchNotifiers();
    } else {
        notifierHost_ = false;
    }
}

TrayWatch::~TrayWatch() = default;

void TrayWatch::watchTray() {
    xcb_connection_t* x = connection_.get();
    const xcb_atom_t selection = connection_.atom("_NET_SYSTEM_TRAY_S" + std::to_string(connection_.screenNumber()));
    const auto version = xcb_xfixes_query_version(x, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION);
    xcb_xfixes_select_selection_input(x, connection_.root(), selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const auto owner = xcb_get_selection_owner(x, selection);
    const XReply<xcb_xfixes_query_version_reply_t> known(xcb_xfixes_query_version_reply(x, version, nullptr));
    const XReply<xcb_get_selection_owner_reply_t> now(xcb_get_selection_owner_reply(x, owner, nullptr));
    trayOwner_ = now ? now->owner : xcb_window_t{XCB_WINDOW_NONE};
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(x, &xcb_xfixes_id);
    if (!known || !extension || !extension->present) {
        return;
    }
    const int type = extension->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    selectionEvents_ = connection_.onEvent([this, type, selection](const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) != type) {
            return;
        }
        const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
        const xcb_window_t other = notify.owner == ownTray_ ? xcb_window_t{XCB_WINDOW_NONE} : notify.owner;
        if (notify.selection == selection && other != trayOwner_) {
            trayOwner_ = other;
            changed_();
        }
    });
    connection_.deliverQueuedEvents();
}

void TrayWatch::watchNotifiers() {
    watcher_ = std::make_unique<QDBusServiceWatcher>(watcherService, QDBusConnection::sessionBus(),
                                                     QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(watcher_.get(), &QDBusServiceWatcher::serviceOwnerChanged, watcher_.get(),
                     [this](const QString&, const QString&, const QString& newOwner) {
                         ownHost_ = !newOwner.isEmpty() && newOwner == ownWatcher_;
                         if (newOwner.isEmpty() || ownHost_) {
                             setNotifierHost(false);
                         } else {
                             askForHost();
                         }
                     });
    const auto ask = [this](const QDBusMessage&) { askForHost(); };
    hostRegistered_ = std::make_unique<BusSignal>(
        BusSignal::Source{watcherService, watcherPath, watcherService, QStringLiteral("StatusNotifierHostRegistered")},
        ask);
    hostUnregistered_ = std::make_unique<BusSignal>(BusSignal::Source{watcherService, watcherPath, watcherService,
                                                                      QStringLiteral("StatusNotifierHostUnregistered")},
                                                    ask);
    askForHost();
}

void TrayWatch::askForHost() {
    if (ownHost_) {
        return;
    }
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    // Only a watcher that already runs counts; asking must not start one.
    question.setAutoStartService(false);
    auto* call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), watcher_.get());
    QObject::connect(call, &QDBusPendingCallWatcher::finished, watcher_.get(), [this](QDBusPendingCallWatcher* done) {
        const QDBusMessage reply = done->reply();
        done->deleteLater();
        const bool answered = reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
        setNotifierHost(answered && !ownHost_ &&
                        reply.arguments().constFirst().value<QDBusVariant>().variant().toBool());
    });
}

void TrayWatch::setNotifierHost(bool present) {
    if (notifierHost_ != present) {
        notifierHost_ = present;
        changed_();
    }
}

} // namespace rb
