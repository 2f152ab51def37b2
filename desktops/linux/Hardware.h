#pragma once

#include "platform/Hardware.h"
#include "platform/Observers.h"

#include <QDBusMessage>
#include <QObject>

#include <memory>

class QSocketNotifier;
struct udev;
struct udev_monitor;

namespace rb {

// Waking from logind, USB devices and changes of Type-C ports from udev (the kernel's own messages where no udev
// runs). Each is asked for when somebody first listens.
class LinuxHardware final : public QObject, public Hardware {
    Q_OBJECT
public:
    LinuxHardware();
    ~LinuxHardware() override;
    LinuxHardware(const LinuxHardware&) = delete;
    LinuxHardware& operator=(const LinuxHardware&) = delete;

    Handle onWake(std::function<void()> woke) override;
    Handle onUSBChange(std::function<void()> changed) override;
    bool tellsOfConnections() const override { return true; }

private Q_SLOTS:
    void prepareForSleep(const QDBusMessage& message);

private:
    void followDevices();
    void readDevices();

    bool followsSleep_ = false;
    udev* udev_ = nullptr;
    udev_monitor* monitor_ = nullptr;
    std::unique_ptr<QSocketNotifier> notifier_;
    Observers<> wakes_;
    Observers<> usb_;
};

} // namespace rb
