#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// The user's settings of this program. Reads answer from memory; a write is on disk, or on its way there under
// the system's own care, when the call returns. A write that can't be stored keeps its effect for this run and is
// logged. Main thread only.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    // The stored value, else the registered one, else nothing.
    virtual std::optional<PropertyValue> objectForKey(const std::string& key) const = 0;
    virtual void setObject(const std::string& key, PropertyValue value) = 0;
    virtual void removeObject(const std::string& key) = 0;
    // Answers for keys that have no stored value. Never stored.
    virtual void registerDefaults(const PropertyDictionary& defaults) = 0;

    // Readings by type. Numbers, booleans and numeric strings convert into each other; anything else reads as
    // false, 0 or nothing.
    bool boolForKey(const std::string& key) const;
    std::int64_t integerForKey(const std::string& key) const;
    std::optional<std::string> stringForKey(const std::string& key) const;
    // Nothing unless every element is a string.
    std::optional<std::vector<std::string>> stringArrayForKey(const std::string& key) const;
};

} // namespace rb
