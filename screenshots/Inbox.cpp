#include "screenshots/Inbox.h"

#include "app/DefaultsKeys.h"

namespace rb {

namespace {

constexpr const char* location = "location";
constexpr const char* locationOfScreenshots = "location-screenshot";

} // namespace

const std::array<std::string, 5>& RBInbox::keys() {
    static const std::array<std::string, 5> all = {location, locationOfScreenshots, "show-thumbnail", "target",
                                                   "target-screenshot"};
    return all;
}

bool RBInbox::contains(const std::string& path) const {
    const std::string home = files_.homeDirectory();
    return standardizedPath(path, home).starts_with(standardizedPath(folder(), home) + "/");
}

bool RBInbox::leadsIntoFolder(const std::string& key) const {
    const auto value = preferences_.value(key);
    const auto* path = value ? value->get<std::string>() : nullptr;
    const std::string home = files_.homeDirectory();
    return path != nullptr && !path->empty() && standardizedPath(*path, home) == standardizedPath(folder(), home);
}

bool RBInbox::isApplied() const {
    preferences_.synchronize();
    return leadsIntoFolder(location) || leadsIntoFolder(locationOfScreenshots);
}

PropertyDictionary RBInbox::usersValues() const {
    PropertyDictionary saved;
    for (const std::string& key : keys()) {
        const auto value = preferences_.value(key);
        if (!value) {
            continue;
        }
        // A location that an earlier takeover left behind isn't the user's own.
        const auto* path = value->get<std::string>();
        if (path != nullptr && key.starts_with(location) &&
            (path->find("/Application Support/") != std::string::npos || contains(*path))) {
            continue;
        }
        saved.emplace(key, *value);
    }
    return saved;
}

void RBInbox::apply() {
    // Where this fails, the watcher reports that it can't watch the folder.
    (void)preferences_.makeOwnFolder();
    if (!isApplied()) {
        defaults_.setObject(DefaultsKey::ClotheslineInboxSaved, usersValues());
    }
    preferences_.setValue(location, folder());
    preferences_.setValue(locationOfScreenshots, folder());
    preferences_.setValue("show-thumbnail", false);
    preferences_.setValue("target", "file");
    preferences_.setValue("target-screenshot", "file");
    preferences_.synchronize();
    // Nobody sends captures where nobody looks for them.
    if (isApplied()) {
        preferences_.redirectPrograms(folder());
    }
}

void RBInbox::keepFolder() {
    if (!files_.facts(folder()).isDirectory && isApplied()) {
        (void)preferences_.makeOwnFolder();
    }
}

void RBInbox::restore() {
    preferences_.restorePrograms();
    if (!isApplied()) {
        return;
    }
    const auto saved = defaults_.objectForKey(DefaultsKey::ClotheslineInboxSaved);
    const auto* values = saved ? saved->get<PropertyDictionary>() : nullptr;
    for (const std::string& key : keys()) {
        const auto value = values != nullptr ? values->find(key) : PropertyDictionary::const_iterator{};
        if (values != nullptr && value != values->end()) {
            preferences_.setValue(key, value->second);
        } else {
            preferences_.setValue(key, std::nullopt);
        }
    }
    preferences_.synchronize();
    // The saved values go only after the restored ones are stored; where that fails (a full disk) they wait.
    if (!isApplied()) {
        defaults_.removeObject(DefaultsKey::ClotheslineInboxSaved);
    }
}

} // namespace rb
