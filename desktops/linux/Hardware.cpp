#include "desktops/linux/Hardware.h"

#include <QDBusConnection>
#include <QFile>
#include <QSocketNotifier>

#include <libudev.h>
#include <string_view>
#include <utility>

namespace rb {

namespace {

// Without one the library would wait for an answer.
bool hasSystemBus() {
    return qEnvironmentVariableIsSet("DBUS_SYSTEM_BUS_ADDRESS") ||
           QFile::exists(QStringLiteral("/run/dbus/system_bus_socket"));
}

} // namespace

LinuxHardware::LinuxHardware() = default;

LinuxHardware::~LinuxHardware() {
    notifier_.reset();
    if (monitor_) {
        udev_monitor_unref(monitor_);
    }
    if (udev_) {
        udev_unref(udev_);
    }
}

Handle LinuxHardware::onWake(std::function<void()> woke) {
    if (!followsSleep_ && hasSystemBus()) {
        followsSleep_ = QDBusConnection::systemBus().connect(
            QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
            QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"), this,
            SLOT(prepareForSleep(QDBusMessage)));
    }
    return followsSleep_ ? wakes_.add(std::move(woke)) : Handle();
}

void LinuxHardware::prepareForSleep(const QDBusMessage& message) {
    // True before the sleep, false after it.
    if (!message.arguments().isEmpty() && message.arguments().constFirst() == QVariant(false)) {
        wakes_.notify();
    }
}

Handle LinuxHardware::onUSBChange(std::function<void()> changed) {
    if (!monitor_) {
        followDevices();
    }
    return monitor_ ? usb_.add(std::move(changed)) : Handle();
}

void LinuxHardware::followDevices() {
    udev_ = udev_ ? udev_ : udev_new();
    if (!udev_) {
        return;
    }
    const bool hasDaemon = QFile::exists(QStringLiteral("/run/udev/control"));
    monitor_ = udev_monitor_new_from_netlink(udev_, hasDaemon ? "udev" : "kernel");
    if (!monitor_) {
        return;
    }
    udev_monitor_filter_add_match_subsystem_devtype(monitor_, "usb", "usb_device");
    udev_monitor_filter_add_match_subsystem_devtype(monitor_, "typec", nullptr);
    if (udev_monitor_enable_receiving(monitor_) < 0) {
        monitor_ = udev_monitor_unref(monitor_);
        return;
    }
    notifier_ = std::make_unique<QSocketNotifier>(udev_monitor_get_fd(monitor_), QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { readDevices(); });
}

void LinuxHardware::readDevices() {
    bool changed = false;
    while (udev_device* device = udev_monitor_receive_device(monitor_)) {
        const char* action = udev_device_get_action(device);
        const char* subsystem = udev_device_get_subsystem(device);
        const std::string_view did = action ? action : "";
        // A hub reports more than comings and goings; a Type-C port reports plugs as changes.
        changed = changed || did == "add" || did == "remove" ||
                  (did == "change" && subsystem && std::string_view(subsystem) == "typec");
        udev_device_unref(device);
    }
    if (changed) {
        usb_.notify();
    }
}

} // namespace rb
