#include "desktops/linux/UserDefaults.h"

#include "platform/Log.h"
#include "platform/RunLoop.h"

#include <utility>

namespace rb {

LinuxUserDefaults::LinuxUserDefaults(const std::string& folder, RunLoop& runLoop, Log& log)
    : runLoop_(runLoop)
    , file_(folder, log)
    , values_(file_.load()) {}

LinuxUserDefaults::~LinuxUserDefaults() {
    synchronize();
}

std::optional<PropertyValue> LinuxUserDefaults::objectForKey(const std::string& key) const {
    for (const PropertyDictionary* dictionary : {&values_, &registered_}) {
        if (const auto entry = dictionary->find(key); entry != dictionary->end()) {
            return entry->second;
        }
    }
    return std::nullopt;
}

void LinuxUserDefaults::setObject(const std::string& key, PropertyValue value) {
    if (const auto entry = values_.find(key); entry != values_.end() && entry->second == value) {
        return;
    }
    change(key, std::move(value));
}

void LinuxUserDefaults::removeObject(const std::string& key) {
    if (values_.contains(key)) {
        change(key, std::nullopt);
    }
}

void LinuxUserDefaults::registerDefaults(const PropertyDictionary& defaults) {
    for (const auto& [key, value] : defaults) {
        registered_.insert_or_assign(key, value);
    }
}

void LinuxUserDefaults::change(const std::string& key, std::optional<PropertyValue> value) {
    if (value) {
        values_.insert_or_assign(key, *value);
    } else {
        values_.erase(key);
    }
    changes_.insert_or_assign(key, std::move(value));
    if (!std::exchange(writing_, true)) {
        runLoop_.post(lifetime_.guard([this] { synchronize(); }));
    }
}

bool LinuxUserDefaults::synchronize() {
    writing_ = false;
    if (!changes_.empty() || !file_.isStored()) {
        values_ = file_.store(values_, std::exchange(changes_, {}));
    }
    return file_.isStored();
}

} // namespace rb
