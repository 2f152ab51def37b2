#include "desktops/linux/Application.h"

#include "desktops/linux/CommandLine.h"
#include "desktops/linux/SingleInstance.h"
#include "desktops/linux/XConnection.h"
#include "platform/Log.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

constexpr qint64 longestInfo = 65536; // bytes

// The writing end of the pipe that carries termination signals into the event loop. A signal handler knows nothing
// but what is static.
volatile std::sig_atomic_t signalPipe = -1;

void signalArrived(int signal) {
    const int saved = errno;
    const char byte = static_cast<char>(signal);
    // A full pipe holds enough signals already.
    [[maybe_unused]] const ssize_t written = write(signalPipe, &byte, 1);
    errno = saved;
}

bool isOrdinaryWindow(const QWindow& window) {
    const Qt::WindowType type = window.type();
    return window.isVisible() && (type == Qt::Window || type == Qt::Dialog) &&
           !window.flags().testFlag(Qt::X11BypassWindowManagerHint) &&
           !window.flags().testFlag(Qt::WindowDoesNotAcceptFocus);
}

} // namespace

// Qt's application and the command line that it sees: never ours, which it would search for options of its own.
class LinuxApplication::QtApplication final : public QApplication {
public:
    explicit QtApplication(LinuxApplication& owner)
        : QApplication(count_, words_.data())
        , owner_(owner) {}

    LinuxApplication& owner() { return owner_; }

private:
    LinuxApplication& owner_;
    // Static because Qt reads them before this object's members exist and keeps the references. The program draws
    // and listens on X11, also where the session would rather have Wayland.
    static inline std::array<char, 8> name_ = {"rookbay"};
    static inline std::array<char, 10> option_ = {"-platform"};
    static inline std::array<char, 4> platform_ = {"xcb"};
    static inline std::array<char*, 4> words_ = {name_.data(), option_.data(), platform_.data(), nullptr};
    static inline int count_ = 3;
};

LinuxApplication::LinuxApplication(std::vector<std::string> arguments, XConnection& connection,
                                   SingleInstance& instance, Log& log)
    : arguments_(std::move(arguments))
    , connection_(connection)
    , instance_(instance)
    , log_(log) {
    catchSignals();
    QCoreApplication::setApplicationName(QStringLiteral("rook-bay"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ROOKBAY_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("rookbay"));
    application_ = std::make_unique<QtApplication>(*this);
    QGuiApplication::setQuitOnLastWindowClosed(false);

    auto* notifier = new QSocketNotifier(signals_.get(), QSocketNotifier::Read, application_.get());
    QObject::connect(notifier, &QSocketNotifier::activated, application_.get(), [this] {
        std::array<char, 64> bytes{};
        while (read(signals_.get(), bytes.data(), bytes.size()) > 0) {}
        terminate();
    });
    QObject::connect(application_.get(), &QCoreApplication::aboutToQuit, application_.get(),
                     [this] { tellWillTerminate(); });
    // The session starts us by our autostart entry; a session that restored us as well would start us twice.
    QObject::connect(application_.get(), &QGuiApplication::saveStateRequest, application_.get(),
                     [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });
    // When the X server goes away, Qt ends the process by exit().
    std::atexit([] {
        if (auto* application = dynamic_cast<QtApplication*>(QCoreApplication::instance())) {
            application->owner().tellWillTerminate();
        }
    });
}

LinuxApplication::~LinuxApplication() {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        std::signal(signal, SIG_DFL);
    }
    close(std::exchange(signalPipe, -1));
}

int LinuxApplication::run(ApplicationDelegate& delegate) {
    delegate_ = &delegate;
    instance_.setReopen([this](const std::vector<std::string>& arguments) {
        if (terminated_ || obeyCommand(arguments)) {
            return;
        }
        const QWindowList windows = QGuiApplication::topLevelWindows();
        const bool visible = std::any_of(windows.begin(), windows.end(),
                                         [](const QWindow* window) { return isOrdinaryWindow(*window); });
        delegate_->applicationShouldHandleReopen(visible);
    });
    delegate.applicationDidFinishLaunching();
    obeyCommand(arguments_);
    const int code = terminated_ ? 0 : QApplication::exec();
    tellWillTerminate();
    instance_.setReopen([](const std::vector<std::string>&) {});
    delegate_ = nullptr;
    return code;
}

bool LinuxApplication::obeyCommand(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        return false;
    }
    if (arguments.front() == hangCommand) {
        delegate_->applicationOpenFiles({arguments.begin() + 1, arguments.end()});
        return true;
    }
    if (arguments.front() == newTextCommand) {
        delegate_->applicationNewTextFile(arguments.size() > 1 ? std::optional(arguments[1]) : std::nullopt);
        return true;
    }
    return false;
}

void LinuxApplication::terminate() {
    tellWillTerminate();
    // Not quit(), which asks every window first and stays when one (an alert) doesn't want to close.
    QCoreApplication::exit(0);
}

void LinuxApplication::tellWillTerminate() {
    if (delegate_ == nullptr || std::exchange(terminated_, true)) {
        return;
    }
    delegate_->applicationWillTerminate();
    if (lastWork_) {
        lastWork_();
    }
}

void LinuxApplication::setActivationPolicy(ActivationPolicy) {}

void LinuxApplication::activateIgnoringOtherApps() {
    const auto stacking = connection_.cardinals(connection_.root(), connection_.atom("_NET_CLIENT_LIST_STACKING"));
    QWindow* front = nullptr;
    std::ptrdiff_t frontPlace = -1;
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        if (!isOrdinaryWindow(*window)) {
            continue;
        }
        // Windows that the window manager doesn't list rank lowest.
        const auto listed = std::find(stacking.begin(), stacking.end(), static_cast<std::uint32_t>(window->winId()));
        const std::ptrdiff_t place = listed == stacking.end() ? -1 : listed - stacking.begin();
        if (front == nullptr || place > frontPlace) {
            front = window;
            frontPlace = place;
        }
    }
    if (front == nullptr) {
        return;
    }
    front->raise();
    connection_.activate(static_cast<xcb_window_t>(front->winId()));
}

std::optional<std::string> LinuxApplication::infoString(const std::string& key) const {
    if (!std::exchange(infoRead_, true)) {
        readInfo();
    }
    const auto entry = info_.find(key);
    return entry == info_.end() ? std::nullopt : std::optional(entry->second);
}

void LinuxApplication::readInfo() const {
    const QString folder = QCoreApplication::applicationDirPath();
    for (const QString& path :
         {folder + QStringLiteral("/info.json"), folder + QStringLiteral("/../share/rook-bay/info.json"),
          QStringLiteral("/usr/share/rook-bay/info.json")}) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            if (file.exists()) {
                log_.write("cannot read " + path.toStdString() + ": " + file.errorString().toStdString());
            }
            continue;
        }
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(file.read(longestInfo), &error);
        if (!document.isObject()) {
            log_.write(path.toStdString() + " is not valid: " +
                       (error.error == QJsonParseError::NoError ? "an object was expected"
                                                                : error.errorString().toStdString()));
            continue;
        }
        const QJsonObject entries = document.object();
        for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
            if (entry->isString()) {
                info_.emplace(entry.key().toStdString(), entry->toString().toStdString());
            }
        }
        return;
    }
}

// Signals that are ignored stay so: whoever started us with nohup meant it.
void LinuxApplication::catchSignals() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        log_.write("cannot catch termination signals: no pipe");
        return;
    }
    signals_ = UniqueFd(ends[0]);
    signalPipe = ends[1];
    std::signal(SIGPIPE, SIG_IGN); // A reader that goes away is an error of a write, not our end.
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler != SIG_IGN) {
            action = {};
            action.sa_handler = signalArrived;
            action.sa_flags = SA_RESTART;
            sigaction(signal, &action, nullptr);
        }
    }
}

} // namespace rb
