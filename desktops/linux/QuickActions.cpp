#include "desktops/linux/QuickActions.h"

#include "desktops/linux/CommandLine.h"
#include "desktops/linux/Folders.h"
#include "desktops/linux/OwnFile.h"
#include "desktops/linux/QuickActionFiles.h"
#include "desktops/linux/ThunarActions.h"
#include "platform/Log.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <unistd.h>
#include <utility>

namespace rb {

namespace {

// How other programs start this one: by its name where the search path leads here, else by its whole path.
std::string ownCommand() {
    const QString path = QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
    const QString name = QFileInfo(path).fileName();
    const QString found = QFileInfo(QStandardPaths::findExecutable(name)).canonicalFilePath();
    return (found == path ? name : path).toStdString();
}

bool isPresent(const std::string& program) {
    return !QStandardPaths::findExecutable(QString::fromStdString(program)).isEmpty();
}

class FileAction final : public QuickAction {
public:
    FileAction(QuickActionFile file, const std::string& command)
        : file_(std::move(file))
        , version_(quickActionVersionOf(command)) {}

    std::optional<std::string> bundledVersion() const override { return version_; }
    std::optional<std::string> installedVersion() const override {
        const auto text = readOwnFile(file_.path);
        return text ? quickActionVersion(*text) : std::nullopt;
    }
    bool isInstalled() const override { return isPathTaken(file_.path); }
    std::optional<std::string> remove() override {
        if (!installedVersion()) {
            return file_.path + " isn't ours";
        }
        if (unlink(file_.path.c_str()) != 0) {
            return file_.path + ": " + lastErrorText();
        }
        return std::nullopt;
    }
    std::optional<std::string> install() override { return writeNewFile(file_.path, file_.text, file_.mode); }

private:
    QuickActionFile file_;
    std::string version_;
};

// One action among the user's own in Thunar's file.
class ThunarFileAction final : public QuickAction {
public:
    explicit ThunarFileAction(std::string command)
        : path_(configHome() + "/Thunar/uca.xml")
        , command_(std::move(command)) {}

    const std::string& path() const { return path_; }
    std::optional<std::string> bundledVersion() const override { return quickActionVersionOf(command_); }
    std::optional<std::string> installedVersion() const override {
        const auto text = readOwnFile(path_);
        const auto ours = text ? findThunarAction(*text) : std::nullopt;
        return ours ? std::optional(ours->version) : std::nullopt;
    }
    bool isInstalled() const override { return installedVersion().has_value(); }
    std::optional<std::string> remove() override {
        const auto text = readOwnFile(path_);
        if (!text) {
            return path_ + " can't be read";
        }
        return replaceOwnFile(path_, *text, withoutThunarAction(*text));
    }
    std::optional<std::string> install() override {
        if (!isPathTaken(path_)) {
            // The user's file hides the one for all users: its actions come along, or they would be lost.
            const auto text = withThunarAction(actionsForAll(), *bundledVersion(), words());
            return text ? writeNewFile(path_, *text, 0600) : "the actions for all users are no valid file";
        }
        const auto before = readOwnFile(path_);
        const auto text = before ? withThunarAction(*before, *bundledVersion(), words()) : std::nullopt;
        return text ? replaceOwnFile(path_, *before, *text) : path_ + " is no file of actions";
    }

private:
    std::string words() const { return shellWord(command_) + " " + newTextCommand; }
    static std::string actionsForAll() {
        QFile file(QStandardPaths::locate(QStandardPaths::GenericConfigLocation, QStringLiteral("Thunar/uca.xml")));
        constexpr qint64 longest = 1 << 20; // bytes
        if (file.open(QIODevice::ReadOnly)) {
            return file.read(longest).toStdString();
        }
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n";
    }

    std::string path_;
    std::string command_;
};

} // namespace

std::vector<std::unique_ptr<QuickAction>> LinuxQuickActions::actions(Wanted wanted) {
    const std::string command = ownCommand();
    std::vector<std::unique_ptr<QuickAction>> found;
    for (QuickActionFile& file : quickActionFiles(command)) {
        const bool present = wanted == Wanted::ForPresentPrograms && isPresent(file.program);
        const std::string path = file.path;
        auto action = std::make_unique<FileAction>(std::move(file), command);
        const bool ours = action->installedVersion().has_value();
        if (wanted == Wanted::Installed ? ours : present && (ours || !action->isInstalled())) {
            found.push_back(std::move(action));
        } else if (present) {
            log_.write(path + " isn't ours and stays as it is");
        }
    }
    auto thunar = std::make_unique<ThunarFileAction>(command);
    if (wanted == Wanted::Installed ? thunar->isInstalled() : isPresent("thunar")) {
        if (wanted == Wanted::ForPresentPrograms && isPathTaken(thunar->path()) && !readOwnFile(thunar->path())) {
            log_.write(thunar->path() + " isn't ours and stays as it is");
        } else {
            found.push_back(std::move(thunar));
        }
    }
    return found;
}

std::vector<std::unique_ptr<QuickAction>> LinuxQuickActions::textActions() {
    return actions(Wanted::ForPresentPrograms);
}

std::vector<std::unique_ptr<QuickAction>> LinuxQuickActions::installedTextActions() {
    return actions(Wanted::Installed);
}

} // namespace rb
