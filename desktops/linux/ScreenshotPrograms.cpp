#include "desktops/linux/ScreenshotPrograms.h"

#include "desktops/linux/Folders.h"
#include "desktops/linux/IniText.h"
#include "desktops/linux/PrivateFile.h"

#include <QStandardPaths>
#include <QString>
#include <QUrl>

#include <utility>

namespace rb {

namespace {

bool isOnPath(const std::string& command) {
    return !QStandardPaths::findExecutable(QString::fromStdString(command)).isEmpty();
}

std::string folderOfUrl(const std::string& written) {
    return QUrl(QString::fromStdString(written)).adjusted(QUrl::StripTrailingSlash).toLocalFile().toStdString();
}

std::string asUrl(const std::string& folder) {
    return QUrl::fromLocalFile(QString::fromStdString(folder)).toEncoded().toStdString();
}

} // namespace

IniScreenshotProgram::IniScreenshotProgram(std::string command, const std::string& file, std::string group,
                                           std::vector<Value> values)
    : command_(std::move(command))
    , path_(configHome() + "/" + file)
    , group_(std::move(group))
    , values_(std::move(values)) {}

bool IniScreenshotProgram::isInstalled() const {
    return isOnPath(command_);
}

ScreenshotProgram::Reading IniScreenshotProgram::read() const {
    PrivateFile::Reading reading = PrivateFile(path_).read();
    return {.readable = reading.readable, .state = std::move(reading.bytes)};
}

bool IniScreenshotProgram::write(const State& state) {
    return PrivateFile(path_).write(state);
}

void IniScreenshotProgram::tidy() {
    PrivateFile(path_).tidy();
}

ScreenshotProgram::State IniScreenshotProgram::redirected(const State& state, const std::string& folder) const {
    std::string text = state.value_or("");
    for (const Value& value : values_) {
        text = withIniValue(text, group_, value.key, value.redirected(folder));
    }
    return text;
}

ScreenshotProgram::State IniScreenshotProgram::undone(const State& current, const State& before,
                                                      const State& after) const {
    if (current == after) {
        return before;
    }
    if (!current) {
        return current;
    }
    std::string text = *current;
    for (const Value& value : values_) {
        const auto ours = iniValue(after.value_or(""), group_, value.key);
        const auto there = iniValue(text, group_, value.key);
        if (ours && there && value.meaning(*there) == value.meaning(*ours)) {
            text = withIniValue(text, group_, value.key, iniValue(before.value_or(""), group_, value.key));
        }
    }
    return text;
}

std::vector<std::unique_ptr<ScreenshotProgram>> knownScreenshotPrograms() {
    const auto yes = [](const std::string&) -> std::string { return "true"; };
    std::vector<std::unique_ptr<ScreenshotProgram>> programs;
    programs.push_back(std::make_unique<IniScreenshotProgram>(
        "flameshot", "flameshot/flameshot.ini", "General",
        std::vector<IniScreenshotProgram::Value>{{"savePath", qtIniEscaped, qtIniUnescaped}, {"savePathFixed", yes}}));
    programs.push_back(std::make_unique<GSettingsScreenshotProgram>("gnome-screenshot", "org.gnome.gnome-screenshot",
                                                                    "auto-save-directory"));
    programs.push_back(std::make_unique<IniScreenshotProgram>(
        "xfce4-screenshooter", "xfce4/xfce4-screenshooter", "",
        std::vector<IniScreenshotProgram::Value>{{"screenshot_dir", asUrl, folderOfUrl}}));
    programs.push_back(std::make_unique<IniScreenshotProgram>(
        "spectacle", "spectaclerc", "Save",
        std::vector<IniScreenshotProgram::Value>{{"defaultSaveLocation", asUrl, folderOfUrl}}));
    return programs;
}

} // namespace rb
