#include "desktops/linux/SessionLock.h"

#include "desktops/linux/BusSignal.h"
#include "desktops/linux/XConnection.h"
#include "platform/Log.h"
#include "platform/RunLoop.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <csignal>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <xcb/dpms.h>

namespace rb {

namespace {

constexpr const char* lockCommandKey = "LinuxLockCommand";
// A locker that ends with an error so soon didn't lock; later it ended for reasons of its own.
constexpr double soon = 5;
// Services answer when the screen is locked, which takes a moment; one that takes longer than this hangs.
constexpr int busTimeout = 3000; // milliseconds

// Somebody ended the locker and meant it; another one would only be in the way.
bool wasStopped(const ChildExit& end) {
    return !end.exited && (end.code == SIGTERM || end.code == SIGINT || end.code == SIGHUP || end.code == SIGKILL);
}

std::set<std::string> programsOnPath() {
    std::set<std::string> found;
    for (const std::string& name : lockPrograms()) {
        if (!QStandardPaths::findExecutable(QString::fromStdString(name)).isEmpty()) {
            found.insert(name);
        }
    }
    return found;
}

std::set<std::string> runningDaemons() {
    std::set<std::string> found;
    const auto& wanted = lockDaemons();
    for (const QFileInfo& process : QDir(QStringLiteral("/proc")).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (process.ownerId() != geteuid() || !process.fileName().front().isDigit()) {
            continue;
        }
        QFile comm(process.filePath() + QStringLiteral("/comm"));
        if (comm.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            const std::string name = comm.readAll().trimmed().toStdString();
            if (std::find(wanted.begin(), wanted.end(), name) != wanted.end()) {
                found.insert(name);
            }
        }
    }
    return found;
}

LockSituation situationWith(std::set<std::string> busNames) {
    return {.busNames = std::move(busNames),
            .programs = programsOnPath(),
            .running = runningDaemons(),
            .desktop = !qEnvironmentVariableIsEmpty("XDG_CURRENT_DESKTOP"),
            .logind = QFile::exists(QStringLiteral("/run/systemd/seats")) &&
                      QFile::exists(QStringLiteral("/run/dbus/system_bus_socket")),
            .wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")};
}

// Calls without blocking; `answered` gets the reply or the error, and is not called after `lifetime` ended.
void callBus(const QDBusConnection& bus, QDBusMessage message, const Lifetime& lifetime,
             std::function<void(const QDBusMessage&)> answered) {
    message.setAutoStartService(false);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, busTimeout), QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     lifetime.guard([answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         answered(QDBusPendingReply<>(*finished).reply());
                     }));
}

// What keeps the display from being switched off by power management; empty when it worked.
std::string forceDpmsOff(xcb_connection_t* connection) {
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_dpms_id);
    if (extension == nullptr || extension->present == 0) {
        return "the X server has no DPMS";
    }
    const XReply<xcb_dpms_capable_reply_t> capable(
        xcb_dpms_capable_reply(connection, xcb_dpms_capable(connection), nullptr));
    const XReply<xcb_dpms_info_reply_t> info(xcb_dpms_info_reply(connection, xcb_dpms_info(connection), nullptr));
    if (!capable || capable->capable == 0) {
        return "the display has no DPMS";
    }
    if (!info || info->state == 0) {
        return "DPMS is switched off"; // the user's choice, which we leave as it is
    }
    const XReply<xcb_generic_error_t> error(
        xcb_request_check(connection, xcb_dpms_force_level_checked(connection, XCB_DPMS_DPMS_MODE_OFF)));
    return error ? "DPMS refused" : "";
}

} // namespace

struct LinuxSessionLock::Round {
    std::vector<LockAttempt> attempts;
    std::size_t next = 0;
};

LinuxSessionLock::LinuxSessionLock(const UserDefaults& defaults, RunLoop& runLoop, Log& log)
    : defaults_(defaults)
    , runLoop_(runLoop)
    , log_(log) {}

void LinuxSessionLock::startScreenSaver() {
    const std::string command = defaults_.stringForKey(lockCommandKey).value_or("");
    const auto words = splitCommand(command);
    if (words && !words->empty()) {
        tryProgram(*words, [this] { lookAtSession(); });
        return;
    }
    if (!words) {
        log_.write(std::string("cannot lock with ") + lockCommandKey + ": a quote has no end");
    }
    lookAtSession();
}

void LinuxSessionLock::lookAtSession() {
    const auto begin = [this](std::set<std::string> names) {
        auto round = std::make_shared<Round>();
        round->attempts = lockAttempts(situationWith(std::move(names)));
        tryNext(round);
    };
    if (!hasSessionBus()) {
        begin({});
        return;
    }
    const auto message =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ListNames"));
    callBus(QDBusConnection::sessionBus(), message, lifetime_, [begin](const QDBusMessage& reply) {
        std::set<std::string> names;
        if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
            for (const QString& name : reply.arguments().constFirst().toStringList()) {
                names.insert(name.toStdString());
            }
        }
        begin(std::move(names));
    });
}

void LinuxSessionLock::tryNext(const std::shared_ptr<Round>& round) {
    if (round->next == round->attempts.size()) {
        log_.write(std::string("nothing could lock the session; install a locker such as i3lock or set ") +
                   lockCommandKey);
        return;
    }
    const LockAttempt& attempt = round->attempts[round->next++];
    const auto otherwise = [this, round] { tryNext(round); };
    if (attempt.kind == LockAttempt::Kind::Program) {
        tryProgram(attempt.words, otherwise);
    } else {
        tryBus(attempt, otherwise);
    }
}

void LinuxSessionLock::tryProgram(const std::vector<std::string>& words, const std::function<void()>& otherwise) {
    const std::string& name = words.front();
    const double started = runLoop_.now();
    const int error = startProgram(words, lifetime_.guard([this, name, started, otherwise](ChildExit end) {
        --lockersRunning_;
        if (end.isSuccess()) {
            return;
        }
        if (runLoop_.now() - started > soon || wasStopped(end)) {
            log_.write(name + " ended with " + end.text());
        } else if (lockersRunning_ > 0) {
            log_.write(name + " ended with " + end.text() + "; an earlier locker still runs");
        } else {
            failed(name, end.text(), otherwise);
        }
    }));
    if (error != 0) {
        failed(name, std::error_code(error, std::generic_category()).message(), otherwise);
        return;
    }
    ++lockersRunning_;
}

void LinuxSessionLock::tryBus(const LockAttempt& attempt, const std::function<void()>& otherwise) {
    const bool isLogind = attempt.kind == LockAttempt::Kind::Logind;
    auto message =
        isLogind
            ? QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.login1"),
                                             QStringLiteral("/org/freedesktop/login1/session/auto"),
                                             QStringLiteral("org.freedesktop.login1.Session"), QStringLiteral("Lock"))
            : QDBusMessage::createMethodCall(QString::fromStdString(attempt.service),
                                             QString::fromStdString(attempt.path),
                                             QString::fromStdString(attempt.interface), QStringLiteral("Lock"));
    if (attempt.takesMessage) {
        message << QString();
    }
    const QDBusConnection bus = isLogind ? QDBusConnection::systemBus() : QDBusConnection::sessionBus();
    callBus(bus, message, lifetime_, [this, name = attempt.name(), otherwise](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ErrorMessage) {
            failed(name, reply.errorMessage().toStdString(), otherwise);
        }
    });
}

void LinuxSessionLock::failed(const std::string& name, const std::string& reason,
                              const std::function<void()>& otherwise) {
    log_.write("cannot lock with " + name + ": " + reason);
    otherwise();
}

// On a connection of its own, because it is called from other threads.
void LinuxSessionLock::sleepDisplays() {
    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection(xcb_connect(nullptr, nullptr),
                                                                                    xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        log_.write("cannot darken the displays: no connection to the X server");
        return;
    }
    const std::string obstacle = forceDpmsOff(connection.get());
    if (obstacle.empty()) {
        return;
    }
    const XReply<xcb_generic_error_t> error(
        xcb_request_check(connection.get(), xcb_force_screen_saver_checked(connection.get(), XCB_SCREEN_SAVER_ACTIVE)));
    if (error || xcb_connection_has_error(connection.get()) != 0) {
        log_.write("cannot darken the displays: " + obstacle + ", and the X server's screen saver refused");
    }
}

} // namespace rb
