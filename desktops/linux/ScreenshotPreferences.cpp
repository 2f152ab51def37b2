#include "desktops/linux/ScreenshotPreferences.h"

#include "desktops/linux/Folders.h"
#include "desktops/linux/UserDefaults.h"

#include <utility>

namespace rb {

LinuxScreenshotPreferences::LinuxScreenshotPreferences(LinuxUserDefaults& defaults, Log& log)
    : defaults_(defaults)
    , log_(log)
    , takeover_(knownScreenshotPrograms(), configFolder() + "/screenshot-programs.json", log_) {}

void LinuxScreenshotPreferences::synchronize() {
    // A fresh look: what was read before may be anybody's work by now.
    DefaultsFile file(configFolder(), log_, "screencapture.json");
    values_ = file.load();
    if (changes_.empty()) {
        return;
    }
    // What the user had is saved there, and must survive us from here on.
    if (!defaults_.synchronize()) {
        log_.write("the screenshot settings stay as they are, because the user's own can't be saved");
        changes_.clear();
        return;
    }
    PropertyDictionary wanted = values_;
    for (const auto& [key, value] : changes_) {
        if (value) {
            wanted.insert_or_assign(key, *value);
        } else {
            wanted.erase(key);
        }
    }
    values_ = file.store(wanted, std::exchange(changes_, {}));
}

std::optional<PropertyValue> LinuxScreenshotPreferences::value(const std::string& key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void LinuxScreenshotPreferences::setValue(const std::string& key, std::optional<PropertyValue> value) {
    if (value) {
        values_.insert_or_assign(key, *value);
    } else {
        values_.erase(key);
    }
    changes_.insert_or_assign(key, std::move(value));
}

std::string LinuxScreenshotPreferences::ownFolder() const {
    return dataFolder() + "/Screenshots";
}

bool LinuxScreenshotPreferences::makeOwnFolder() {
    return !makePrivateFolder(ownFolder());
}

} // namespace rb
