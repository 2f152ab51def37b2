#include "desktops/virtual/Screenshots.h"

#include "desktops/virtual/Files.h"
#include "desktops/virtual/RunLoop.h"

#include <utility>

namespace rb {

void VirtualScreenshotPreferences::synchronize() {
    loop_.requireMainThread("ScreenshotPreferences::synchronize");
    if (refusesStoring_) {
        changes_.clear();
    }
    if (!changes_.empty()) {
        ++commits_;
    }
    for (auto& [key, value] : std::exchange(changes_, {})) {
        if (value) {
            stored_.insert_or_assign(key, std::move(*value));
        } else {
            stored_.erase(key);
        }
    }
    seen_ = stored_;
}

std::optional<PropertyValue> VirtualScreenshotPreferences::value(const std::string& key) const {
    const auto found = seen_.find(key);
    return found == seen_.end() ? std::nullopt : std::optional(found->second);
}

void VirtualScreenshotPreferences::setValue(const std::string& key, std::optional<PropertyValue> value) {
    changes_[key] = value;
    if (value) {
        seen_.insert_or_assign(key, std::move(*value));
    } else {
        seen_.erase(key);
    }
}

bool VirtualScreenshotPreferences::makeOwnFolder() {
    if (refusesFolder_) {
        return false;
    }
    files_.addFolder(ownFolder());
    return true;
}

} // namespace rb
