#pragma once

#include "platform/Handle.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

class QDBusServiceWatcher;

namespace rb {

class BusSignal;
class XConnection;

// Knows which trays the session has now, and tells when that changes. Asks without waiting. Main thread only.
class TrayWatch {
public:
    TrayWatch(XConnection& connection, std::function<void()> changed);
    ~TrayWatch();
    TrayWatch(const TrayWatch&) = delete;
    TrayWatch& operator=(const TrayWatch&) = delete;

    // Whether a StatusNotifierItem host shows items; nothing until the bus has answered.
    std::optional<bool> hasNotifierHost() const { return notifierHost_; }
    // The XEmbed tray's window, or none.
    xcb_window_t trayOwner() const { return trayOwner_; }

    // What we are ourselves, for our own bar, counts as nobody's.
    void setOwnTray(xcb_window_t window) { ownTray_ = window; }
    // The unique bus name of our own watcher, told before it takes the well-known one.
    void setOwnWatcher(const QString& connection) { ownWatcher_ = connection; }

private:
    void watchTray();
    void watchNotifiers();
    void askForHost();
    void setNotifierHost(bool present);

    XConnection& connection_;
    std::function<void()> changed_;
    std::optional<bool> notifierHost_;
    xcb_window_t trayOwner_ = XCB_WINDOW_NONE;
    xcb_window_t ownTray_ = XCB_WINDOW_NONE;
    QString ownWatcher_;
    bool ownHost_ = false; // ours is the session's watcher
    Handle selectionEvents_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    std::unique_ptr<BusSignal> hostRegistered_;
    std::unique_ptr<BusSignal> hostUnregistered_;
    Lifetime lifetime_;
};

} // namespace rb
