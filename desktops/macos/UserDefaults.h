#pragma once

#include "platform/UserDefaults.h"

namespace rb {

// NSUserDefaults of the program.
class MacUserDefaults final : public UserDefaults {
public:
    std::optional<PropertyValue> objectForKey(const std::string& key) const override;
    void setObject(const std::string& key, PropertyValue value) override;
    void removeObject(const std::string& key) override;
    void registerDefaults(const PropertyDictionary& defaults) override;
};

} // namespace rb
