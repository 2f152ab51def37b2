#include "desktops/macos/UserDefaults.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/PropertyLists.h"

namespace rb {

std::optional<PropertyValue> MacUserDefaults::objectForKey(const std::string& key) const {
    return propertyValue([NSUserDefaults.standardUserDefaults objectForKey:nsString(key)]);
}

void MacUserDefaults::setObject(const std::string& key, PropertyValue value) {
    [NSUserDefaults.standardUserDefaults setObject:propertyList(value) forKey:nsString(key)];
}

void MacUserDefaults::removeObject(const std::string& key) {
    [NSUserDefaults.standardUserDefaults removeObjectForKey:nsString(key)];
}

void MacUserDefaults::registerDefaults(const PropertyDictionary& defaults) {
    [NSUserDefaults.standardUserDefaults registerDefaults:propertyList(defaults)];
}

} // namespace rb
