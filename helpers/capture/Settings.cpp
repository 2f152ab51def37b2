#include "helpers/capture/Settings.h"

#include "desktops/linux/DefaultsFormat.h"
#include "desktops/linux/Folders.h"
#include "desktops/linux/PrivateFile.h"
#include "platform/Files.h"

#include <array>
#include <cstdint>
#include <sys/stat.h>

namespace rb {

namespace {

const std::string* textOf(const PropertyDictionary& preferences, const char* key) {
    const auto found = preferences.find(key);
    const auto* text = found == preferences.end() ? nullptr : found->second.get<std::string>();
    return text != nullptr && !text->empty() ? text : nullptr;
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

CaptureSettings readCaptureSettings(const PropertyDictionary& preferences) {
    CaptureSettings settings;
    // What is said for screenshots goes before what is said for captures of all kinds.
    for (const char* key : {"location-screenshot", "location"}) {
        if (const std::string* location = textOf(preferences, key)) {
            settings.locations.push_back(*location);
        }
    }
    for (const char* key : {"target-screenshot", "target"}) {
        if (const std::string* target = textOf(preferences, key)) {
            settings.toClipboard = *target == "clipboard";
            break;
        }
    }
    if (const auto found = preferences.find("show-thumbnail"); found != preferences.end()) {
        if (const bool* shown = found->second.get<bool>()) {
            settings.thumbnail = *shown;
        } else if (const auto* number = found->second.get<std::int64_t>()) {
            settings.thumbnail = *number != 0;
        }
    }
    if (const std::string* type = textOf(preferences, "type")) {
        settings.type = *type;
    }
    return settings;
}

CaptureSettings loadCaptureSettings(const std::function<void(const std::string&)>& complain) {
    const std::string path = configFolder() + "/screencapture.json";
    const PrivateFile::Reading reading = PrivateFile(path).read();
    if (!reading.readable) {
        complain("无法读取截图设置 " + path + "，按默认设置截取");
        return {};
    }
    if (!reading.bytes) {
        return {};
    }
    const ParsedDefaults parsed = parseDefaults(*reading.bytes);
    if (!parsed.values) {
        complain("截图设置 " + path + " 内容有误，按默认设置截取");
        return {};
    }
    return readCaptureSettings(*parsed.values);
}

std::string captureFolder(const CaptureSettings& settings, const std::string& home, const std::string& desktop) {
    for (const std::string& location : settings.locations) {
        std::string path = standardizedPath(location, home);
        if (path.starts_with('/') && isFolder(path)) {
            return path;
        }
    }
    return desktop;
}

} // namespace rb
