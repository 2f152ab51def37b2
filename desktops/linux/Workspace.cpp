#include "desktops/linux/Workspace.h"

#include "desktops/linux/BusSignal.h"
#include "desktops/linux/ChildProcess.h"
#include "platform/Files.h"
#include "platform/Log.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>

#include <memory>
#include <system_error>
#include <utility>

namespace rb {

namespace {

constexpr int handedOverAfter = 3000; // milliseconds
constexpr int showTimeout = 10000;    // milliseconds; a file manager may have to start first

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

// Tells once, in a turn of its own.
class Answer {
public:
    explicit Answer(Workspace::Done done)
        : done_(std::make_shared<Workspace::Done>(std::move(done))) {}
    void operator()(bool opened) const {
        if (Workspace::Done done = std::exchange(*done_, nullptr)) {
            QTimer::singleShot(0, QCoreApplication::instance(), [done = std::move(done), opened] { done(opened); });
        }
    }

private:
    std::shared_ptr<Workspace::Done> done_;
};

} // namespace

void LinuxWorkspace::handOver(const std::vector<std::string>& words, Done done) {
    const Answer answer(std::move(done));
    const auto ended = lifetime_.guard([this, answer, program = words.front()](ChildExit exit) {
        if (!exit.isSuccess()) {
            log_.write(program + " ended with " + exit.text());
        }
        answer(exit.isSuccess());
    });
    if (const int error = startProgram(words, ended)) {
        log_.write("cannot start " + words.front() + ": " + std::error_code(error, std::generic_category()).message());
        answer(false);
        return;
    }
    QTimer::singleShot(handedOverAfter, QCoreApplication::instance(), lifetime_.guard([answer] { answer(true); }));
}

void LinuxWorkspace::openFile(const std::string& path, Done done) {
    handOver({"xdg-open", path}, std::move(done));
}

void LinuxWorkspace::openURL(const std::string& url) {
    handOver({"xdg-open", url}, nullptr);
}

// Not by the file's own type: a new file is empty, and some desktops take an empty file for nothing in particular.
void LinuxWorkspace::openInTextEditor(const std::string& path, Done done) {
    auto* question = new QProcess(QCoreApplication::instance());
    const Answer answer(std::move(done));
    const auto answered = [this, question, path, answer] {
        const QString entry = QString::fromUtf8(question->readAllStandardOutput()).trimmed();
        const QString file = entry.isEmpty()
                                 ? QString()
                                 : QStandardPaths::locate(QStandardPaths::ApplicationsLocation, entry);
        if (file.isEmpty()) {
            log_.write("no program for plain text is set");
            answer(false);
            return;
        }
        handOver({"gio", "launch", file.toStdString(), path}, [answer](bool opened) { answer(opened); });
    };
    const auto finish = [question, answered] {
        question->deleteLater();
        answered();
    };
    QObject::connect(question, &QProcess::finished, question,
                     lifetime_.guard([finish](int, QProcess::ExitStatus) { finish(); }));
    QObject::connect(question, &QProcess::errorOccurred, question,
                     lifetime_.guard([finish](QProcess::ProcessError error) {
                         if (error == QProcess::FailedToStart) {
                             finish();
                         }
                     }));
    question->setStandardErrorFile(QProcess::nullDevice());
    question->setStandardInputFile(QProcess::nullDevice());
    question->start(QStringLiteral("xdg-mime"), {QStringLiteral("query"), QStringLiteral("default"),
                                                 QStringLiteral("text/plain")});
}

void LinuxWorkspace::revealFiles(const std::vector<std::string>& paths) {
    if (paths.empty()) {
        return;
    }
    if (!hasSessionBus()) {
        openParent(paths.front());
        return;
    }
    QStringList uris;
    for (const std::string& path : paths) {
        uris << QUrl::fromLocalFile(text(path)).toString(QUrl::FullyEncoded);
    }
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << uris << QString();
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, showTimeout),
                                                QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     lifetime_.guard([this, watcher, first = paths.front()](QDBusPendingCallWatcher*) {
                         if (watcher->isError()) {
                             openParent(first);
                         }
                         watcher->deleteLater();
                     }));
}

void LinuxWorkspace::openParent(const std::string& path) {
    handOver({"xdg-open", deletingLastPathComponent(path)}, nullptr);
}

} // namespace rb
