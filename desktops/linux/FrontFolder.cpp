#include "desktops/linux/FrontFolder.h"

#include "desktops/linux/BusSignal.h"
#include "desktops/linux/XConnection.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace rb {

namespace {

constexpr int answerTimeout = 1000; // milliseconds; who is slower is not going to tell
constexpr std::uint32_t longestText = 4096; // in units of four bytes

// The classes of file managers' windows.
constexpr std::array<std::string_view, 12> fileManagers{
    "org.gnome.nautilus", "nautilus",     "nemo",        "caja", "thunar",  "pcmanfm-qt",
    "pcmanfm",            "dolphin",      "org.kde.dolphin", "spacefm", "krusader", "doublecmd"};

bool isFileManager(const std::string& windowClass) {
    std::string lower = windowClass;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    // Instance and class, each ended by a zero.
    for (std::size_t start = 0; start < lower.size();) {
        const std::size_t end = std::min(lower.find('\0', start), lower.size());
        const auto name = std::string_view(lower).substr(start, end - start);
        if (std::find(fileManagers.begin(), fileManagers.end(), name) != fileManagers.end()) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

// The folder on this machine behind an address; empty for the rest (network places, the Trash).
std::string localFolder(const std::string& uri) {
    const QUrl url(QString::fromStdString(uri));
    const QString path = url.isLocalFile() ? url.toLocalFile() : QString();
    return !path.isEmpty() && QFileInfo(path).isDir() ? QDir::cleanPath(path).toStdString() : std::string();
}

// A title such as "/home/me/text - Thunar" names the folder; one that only holds the folder's name doesn't.
std::string folderInTitle(const std::string& title) {
    if (!title.starts_with('/') && !title.starts_with("~")) {
        return {};
    }
    // Dashes may also belong to the folder: the longest part that is one.
    std::string candidate = title;
    while (!candidate.empty()) {
        QString path = QString::fromStdString(candidate).trimmed();
        if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/"))) {
            path.replace(0, 1, QDir::homePath());
        }
        if (path.startsWith(QLatin1Char('/')) && QFileInfo(path).isDir()) {
            return QDir::cleanPath(path).toStdString();
        }
        const std::size_t hyphen = candidate.rfind(" - ");
        const std::size_t dash = candidate.rfind(" — ");
        const std::size_t cut = hyphen == std::string::npos ? dash
                                : dash == std::string::npos ? hyphen
                                                            : std::max(hyphen, dash);
        candidate = cut == std::string::npos ? std::string() : candidate.substr(0, cut);
    }
    return {};
}

std::optional<LinuxFrontFolder::Locations> readLocations(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return std::nullopt;
    }
    const QVariant value = reply.arguments().constFirst().value<QDBusVariant>().variant();
    if (!value.canConvert<QDBusArgument>()) {
        return std::nullopt;
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a{sas}")) {
        return std::nullopt;
    }
    LinuxFrontFolder::Locations locations;
    argument.beginMap();
    while (!argument.atEnd()) {
        QString window;
        QStringList uris;
        argument.beginMapEntry();
        argument >> window >> uris;
        argument.endMapEntry();
        auto& list = locations[window.toStdString()];
        for (const QString& uri : uris) {
            list.push_back(uri.toStdString());
        }
    }
    argument.endMap();
    return locations;
}

} // namespace

LinuxFrontFolder::Answer LinuxFrontFolder::decide(const std::vector<FileManagerWindow>& windows,
                                                  const Locations* locations, const std::string& desktop) {
    const auto visibleTab = [](const std::vector<std::string>& tabs) {
        return tabs.empty() ? std::string() : localFolder(tabs.front());
    };
    if (!windows.empty()) {
        const FileManagerWindow& front = windows.front();
        if (locations != nullptr && !front.objectPath.empty()) {
            const auto found = locations->find(front.objectPath);
            if (found != locations->end()) {
                return {.path = visibleTab(found->second), .errorText = "the front window shows no local folder"};
            }
        }
        return {.path = folderInTitle(front.title), .errorText = "the front file manager doesn't tell its folder"};
    }
    if (locations == nullptr) {
        return {.errorText = "no file manager tells its folders"};
    }
    if (locations->empty()) {
        return {.path = desktop};
    }
    // Windows that this X server doesn't show, as in a Wayland session: only a single one is certainly the front one.
    if (locations->size() == 1) {
        return {.path = visibleTab(locations->begin()->second), .errorText = "the window shows no local folder"};
    }
    return {.errorText = "it can't be told which window is in front"};
}

void LinuxFrontFolder::ask(std::function<void(const Answer&)> answer) {
    const auto tell = [answer = std::move(answer)](const std::vector<FileManagerWindow>& windows,
                                                   const Locations* locations) {
        const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
        Answer result = decide(windows, locations, desktop.toStdString());
        if (!result.path.empty()) {
            result.errorText.clear();
        }
        answer(result);
    };
    // Now, before our own panel or menu changes what is in front.
    std::vector<FileManagerWindow> found = windows();
    if (!hasSessionBus()) {
        tell(found, nullptr);
        return;
    }
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << QStringLiteral("org.freedesktop.FileManager1") << QStringLiteral("OpenWindowsWithLocations");
    call.setAutoStartService(false); // one that doesn't run has no windows
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, answerTimeout),
                                                QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     lifetime_.guard([watcher, tell, found = std::move(found)](QDBusPendingCallWatcher*) {
                         const auto locations = readLocations(watcher->reply());
                         watcher->deleteLater();
                         tell(found, locations ? &*locations : nullptr);
                     }));
}

std::vector<LinuxFrontFolder::FileManagerWindow> LinuxFrontFolder::windows() {
    std::vector<FileManagerWindow> found;
    auto stacking = connection_.cardinals(connection_.root(), connection_.atom("_NET_CLIENT_LIST_STACKING"));
    std::reverse(stacking.begin(), stacking.end());
    for (const std::uint32_t window : stacking) {
        if (!isFileManager(text(window, "WM_CLASS"))) {
            continue;
        }
        // The desktop with its icons is a window of some file managers too.
        const auto types = connection_.cardinals(window, connection_.atom("_NET_WM_WINDOW_TYPE"));
        if (std::find(types.begin(), types.end(), connection_.atom("_NET_WM_WINDOW_TYPE_DESKTOP")) != types.end()) {
            continue;
        }
        const auto states = connection_.cardinals(window, connection_.atom("_NET_WM_STATE"));
        if (std::find(states.begin(), states.end(), connection_.atom("_NET_WM_STATE_HIDDEN")) != states.end()) {
            continue;
        }
        found.push_back({.objectPath = text(window, "_GTK_WINDOW_OBJECT_PATH"), .title = text(window, "_NET_WM_NAME")});
    }
    return found;
}

std::string LinuxFrontFolder::text(unsigned window, const char* property) {
    const xcb_atom_t atom = connection_.atom(property);
    const auto cookie = xcb_get_property(connection_.get(), 0, window, atom, XCB_GET_PROPERTY_TYPE_ANY, 0, longestText);
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_.get(), cookie, nullptr));
    if (!reply || reply->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

} // namespace rb
