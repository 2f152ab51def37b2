#include "app/NewTextFile.h"

#include "app/DefaultsKeys.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/QuickActions.h"
#include "platform/RandomSource.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"

#include <utility>

namespace rb {

namespace {

constexpr const char* extension = "txt";
constexpr const char* firstName = "新建文本";
constexpr int lastNumber = 9999;
constexpr const char* automationSettings = "x-apple.systempreferences:com.apple.preference.security?Privacy_Automation";

std::string withExtension(const std::string& name) {
    return name + "." + extension;
}

} // namespace

void NewTextFile::newTextFile() {
    if (textSavePanel_) {
        desktop_.application.activateIgnoringOtherApps();
        textSavePanel_->makeKeyAndOrderFront();
        return;
    }
    if (asking_) {
        return; // its panel is about to come
    }
    asking_ = true;
    const int question = ++question_;
    currentFinderFolder(lifetime_.guard([this, question](const FrontFolder::Answer& front) {
        if (question != question_) {
            return; // another folder was named meanwhile
        }
        asking_ = false;
        if (!front.path.empty()) {
            showPanel(front.path);
        } else if (front.errorCode == FrontFolder::notPermitted) {
            showAutomationPermissionAlert();
        } else {
            showPanel(fallbackFolder());
        }
    }));
}

void NewTextFile::newTextFileIn(const std::string& folder) {
    if (textSavePanel_) {
        newTextFile();
        return;
    }
    ++question_;
    asking_ = false;
    showPanel(desktop_.files.facts(folder).isDirectory ? folder : fallbackFolder());
}

void NewTextFile::currentFinderFolder(FolderAnswer answer) {
    desktop_.frontFolder.ask([answer = std::move(answer)](const FrontFolder::Answer& front) {
        FrontFolder::Answer result = front;
        if (result.path.empty() && result.errorText.empty()) {
            result.errorText = "无法读取 Finder 当前文件夹。";
        }
        answer(result);
    });
}

void NewTextFile::showAutomationPermissionAlert() {
    const Alert alert{.messageText = "需要允许 Rook Bay 控制 Finder",
                      .informativeText = "Rook Bay 需要读取 Finder 当前打开的文件夹，才能在那里新建 TXT。请在“系统设置 "
                                         "→ 隐私与安全性 → 自动化”中，为 Rook Bay 打开“Finder”。",
                      .buttons = {{.title = "打开系统设置"}, {.title = "取消"}}};
    desktop_.application.activateIgnoringOtherApps();
    desktop_.alerts.runModal(alert, [&workspace = desktop_.workspace](std::size_t button) {
        if (button == 0) {
            workspace.openURL(automationSettings);
        }
    });
}

std::string NewTextFile::fallbackFolder() const {
    const auto last = desktop_.userDefaults.stringForKey(DefaultsKey::TextFileLastDirectory);
    return last && desktop_.files.facts(*last).isDirectory ? *last : desktop_.files.desktopDirectory();
}

void NewTextFile::showPanel(const std::string& folder) {
    desktop_.application.activateIgnoringOtherApps();
    const SavePanelSpec spec{.title = "新建 TXT",
                             .prompt = "创建",
                             .directory = folder,
                             .name = proposedName(folder),
                             .extension = extension};
    textSavePanel_ = desktop_.savePanels.begin(
        spec, [this](const std::string& path) { return validate(path); },
        [this](const std::optional<std::string>& path) { panelFinished(path); });
}

std::string NewTextFile::proposedName(const std::string& folder) const {
    const auto isFree = [&](const std::string& name) { return !isTaken(appendingPathComponent(folder, name)); };
    if (std::string first = withExtension(firstName); isFree(first)) {
        return first;
    }
    for (int number = 2; number <= lastNumber; ++number) {
        std::string name = withExtension(std::string(firstName) + " " + std::to_string(number));
        if (isFree(name)) {
            return name;
        }
    }
    return withExtension(desktop_.random.newUUIDString());
}

bool NewTextFile::isTaken(const std::string& path) const {
    const FileFacts facts = desktop_.files.facts(path);
    return facts.exists || facts.isSymbolicLink;
}

std::optional<std::string> NewTextFile::validate(const std::string& path) const {
    return isTaken(path) ? std::optional<std::string>("已有同名文件，请换一个名称。") : std::nullopt;
}

void NewTextFile::panelFinished(const std::optional<std::string>& path) {
    const std::optional<std::string> chosen = path; // may belong to the panel, which goes now
    textSavePanel_.reset();
    if (!chosen) {
        return;
    }
    if (const auto error = desktop_.files.createEmptyFile(*chosen)) {
        const Alert alert{.messageText = "无法创建文本文件",
                          .informativeText = error->empty() ? "请检查保存位置和文件名。" : *error,
                          .buttons = {}};
        desktop_.alerts.runModal(alert, [](std::size_t) {});
        return;
    }
    desktop_.userDefaults.setObject(DefaultsKey::TextFileLastDirectory, deletingLastPathComponent(*chosen));
    openCreatedTextFile(*chosen);
}

void NewTextFile::openCreatedTextFile(const std::string& path) {
    desktop_.workspace.openInTextEditor(path, [&workspace = desktop_.workspace, path](bool opened) {
        if (!opened) {
            workspace.revealFiles({path});
        }
    });
}

void NewTextFile::installTextQuickAction() {
    bool changed = false;
    for (const auto& action : desktop_.quickActions.textActions()) {
        const auto installed = action->installedVersion();
        if (installed && installed == action->bundledVersion()) {
            continue;
        }
        if (action->isInstalled()) {
            if (const auto error = action->remove()) {
                desktop_.log.write("TXT Quick Action update failed: " + *error);
                continue;
            }
            changed = true;
        }
        if (const auto error = action->install()) {
            desktop_.log.write("TXT Quick Action installation failed: " + *error);
            continue;
        }
        changed = true;
    }
    if (changed) {
        desktop_.quickActions.refresh();
    }
}

void NewTextFile::removeTextQuickAction() {
    bool changed = false;
    for (const auto& action : desktop_.quickActions.installedTextActions()) {
        changed = !action->remove() || changed;
    }
    if (changed) {
        desktop_.quickActions.refresh();
    }
}

} // namespace rb
