#pragma once

#include "platform/Handle.h"

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

private:
    void watchTray();
    void watchNotifiers();
    void askForHost();
    void setNotifierHost(bool present);

    XConnection& connection_;
    std::function<void()> changed_;
    std::optional<bool> notifierHost_;
    xcb_window_t trayOwner_ = XCB_WINDOW_NONE;
    Handle selectionEvents_;
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    std::unique_ptr<BusSignal> hostRegistered_;
    std::unique_ptr<BusSignal> hostUnregistered_;
    Lifetime lifetime_;
};

} // namespace rb
