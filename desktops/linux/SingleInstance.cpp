#include "desktops/linux/SingleInstance.h"

#include "desktops/linux/BusSignal.h"
#include "desktops/linux/Folders.h"
#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

namespace rb {

namespace {

constexpr const char* objectPath = "/org/rookbay/RookBay";
constexpr const char* interfaceName = "org.rookbay.RookBay1";

// A running program answers within milliseconds, also while it starts; the limit is for one that hangs.
constexpr int openTimeout = 3000; // milliseconds
constexpr int busTimeout = 3000;  // milliseconds

QString serviceName() {
    return QStringLiteral("org.rookbay.RookBay");
}

enum class NameReply { Ours, Taken, NoAnswer };

NameReply requestName(const QDBusConnection& bus) {
    constexpr unsigned doNotQueue = 4;
    constexpr unsigned primaryOwner = 1;
    constexpr unsigned alreadyOwner = 4;
    auto request =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    request << serviceName() << doNotQueue;
    const QDBusMessage reply = bus.call(request, QDBus::Block, busTimeout);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return NameReply::NoAnswer;
    }
    const unsigned result = reply.arguments().constFirst().toUInt();
    return result == primaryOwner || result == alreadyOwner ? NameReply::Ours : NameReply::Taken;
}

} // namespace

// The object that later starts call.
class SingleInstance::Door final : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override {
        return QStringLiteral("<interface name=\"org.rookbay.RookBay1\"><method name=\"Open\">"
                              "<arg name=\"arguments\" type=\"as\" direction=\"in\"/></method></interface>");
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        // A call may leave the interface out.
        if ((!message.interface().isEmpty() && message.interface() != QLatin1String(interfaceName)) ||
            message.member() != QLatin1String("Open") || message.signature() != QLatin1String("as")) {
            return false;
        }
        // The answer goes first: the other start need not wait for a window.
        if (message.isReplyRequired()) {
            connection.send(message.createReply());
        }
        std::vector<std::string> arguments;
        for (const QString& argument : message.arguments().constFirst().toStringList()) {
            arguments.push_back(argument.toStdString());
        }
        if (reopen) {
            reopen(arguments);
        } else {
            early = std::move(arguments);
        }
        return true;
    }

    Reopen reopen;
    std::optional<std::vector<std::string>> early;
};

SingleInstance::SingleInstance(Log& log)
    : log_(log) {}

SingleInstance::~SingleInstance() {
    if (door_) {
        QDBusConnection::sessionBus().unregisterObject(QString::fromLatin1(objectPath));
    }
}

SingleInstance::Outcome SingleInstance::claim(const std::vector<std::string>& arguments) {
    if (hasSessionBus() && QDBusConnection::sessionBus().isConnected()) {
        return claimOnBus(arguments);
    }
    // Whoever asks for the session bus later would otherwise make the library start one of its own.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    log_.write("no session bus; later starts can't reach this one");
    return claimFile();
}

void SingleInstance::setReopen(Reopen reopen) {
    if (!door_) {
        return;
    }
    door_->reopen = std::move(reopen);
    if (const auto arguments = std::exchange(door_->early, std::nullopt)) {
        door_->reopen(*arguments);
    }
}

SingleInstance::Outcome SingleInstance::claimOnBus(const std::vector<std::string>& arguments) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    // The object is there before the name is, so whoever finds the name finds the object.
    door_ = std::make_unique<Door>();
    bus.registerVirtualObject(QString::fromLatin1(objectPath), door_.get());
    // The owner may end between the two questions: then the name is free and is asked for again.
    for (int attempt = 0; attempt < 3; ++attempt) {
        switch (requestName(bus)) {
        case NameReply::Ours:
            return Outcome::First;
        case NameReply::NoAnswer:
            return fail("会话总线没有回应，无法确认 Rook Bay 是否已在运行。");
        case NameReply::Taken:
            break;
        }
        auto open = QDBusMessage::createMethodCall(serviceName(), QString::fromLatin1(objectPath),
                                                   QString::fromLatin1(interfaceName), QStringLiteral("Open"));
        QStringList list;
        for (const std::string& argument : arguments) {
            list << QString::fromStdString(argument);
        }
        open << list;
        open.setAutoStartService(false);
        const QDBusMessage reply = bus.call(open, QDBus::Block, openTimeout);
        if (reply.type() == QDBusMessage::ReplyMessage) {
            return Outcome::HandedOver;
        }
        const QString error = reply.errorName();
        if (error != QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") &&
            error != QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner")) {
            const bool silent = error == QLatin1String("org.freedesktop.DBus.Error.NoReply");
            return fail("Rook Bay 已在运行，但" + (silent ? "没有回应" : "拒绝了请求：" + error.toStdString()) +
                        "。请结束它后再启动。");
        }
    }
    return fail("Rook Bay 已在运行，但无法联系到它。");
}

SingleInstance::Outcome SingleInstance::claimFile() {
    std::string folder = runtimeFolder();
    if (folder.empty()) {
        folder = dataFolder();
        if (const std::error_code error = makePrivateFolder(folder)) {
            return fail("无法创建文件夹 " + folder + "：" + error.message() + "。");
        }
    }
    const std::string path = folder + "/rook-bay.lock";
    lock_ = UniqueFd(open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!lock_) {
        return fail("无法打开 " + path + "：" + lastErrorText() + "。");
    }
    if (flock(lock_.get(), LOCK_EX | LOCK_NB) != 0) {
        return errno == EWOULDBLOCK ? fail("Rook Bay 已在运行；没有会话总线（D-Bus），无法联系到它。")
                                    : fail("无法锁定 " + path + "：" + lastErrorText() + "。");
    }
    return Outcome::First;
}

SingleInstance::Outcome SingleInstance::fail(const std::string& message) {
    message_ = message;
    return Outcome::Failed;
}

} // namespace rb
