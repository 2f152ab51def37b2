#include "helpers/capture/Notice.h"

#include "desktops/linux/BusSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

#include <cstdio>
#include <unistd.h>

namespace rb {

void tellUser(const std::string& text) {
    std::fprintf(stderr, "rookbay-capture：%s\n", text.c_str());
    if (isatty(STDERR_FILENO) != 0 || !hasSessionBus()) {
        return;
    }
    constexpr int patience = 1000; // milliseconds
    constexpr int asUsual = -1;
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    QDBusMessage call = QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"),
                                                       service, QStringLiteral("Notify"));
    call << QStringLiteral("Rook Bay") << 0U << QStringLiteral("rookbay") << QStringLiteral("截图")
         << QString::fromStdString(text) << QStringList() << QVariantMap() << asUsual;
    QDBusConnection::sessionBus().call(call, QDBus::Block, patience);
}

} // namespace rb
