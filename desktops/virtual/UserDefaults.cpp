#include "desktops/virtual/UserDefaults.h"

#include "desktops/virtual/RunLoop.h"

#include <utility>

namespace rb {

std::optional<PropertyValue> VirtualUserDefaults::objectForKey(const std::string& key) const {
    loop_.requireMainThread("UserDefaults::objectForKey");
    for (const PropertyDictionary* values : {&stored_, &registered_}) {
        const auto found = values->find(key);
        if (found != values->end()) {
            return found->second;
        }
    }
    return std::nullopt;
}

void VirtualUserDefaults::setObject(const std::string& key, PropertyValue value) {
    loop_.requireMainThread("UserDefaults::setObject");
    stored_.insert_or_assign(key, std::move(value));
}

void VirtualUserDefaults::removeObject(const std::string& key) {
    loop_.requireMainThread("UserDefaults::removeObject");
    stored_.erase(key);
}

void VirtualUserDefaults::registerDefaults(const PropertyDictionary& defaults) {
    loop_.requireMainThread("UserDefaults::registerDefaults");
    for (const auto& [key, value] : defaults) {
        registered_.insert_or_assign(key, value);
    }
}

} // namespace rb
