#include "desktops/linux/BusSignal.h"

#include <QDBusConnection>
#include <QFile>

#include <utility>

namespace rb {

bool hasSessionBus() {
    // Without either of these the library would launch a bus of its own, which nobody else is on.
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

BusSignal::BusSignal(const Source& source, std::function<void(const QDBusMessage&)> received)
    : received_(std::move(received)) {
    QDBusConnection::sessionBus().connect(source.service, source.path, source.interface, source.name, this,
                                          SLOT(receive(QDBusMessage)));
}

void BusSignal::receive(const QDBusMessage& message) {
    received_(message);
}

} // namespace rb
