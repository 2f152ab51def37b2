#pragma once

#include "platform/UserDefaults.h"

namespace rb {

class VirtualRunLoop;

// Settings in memory.
class VirtualUserDefaults final : public UserDefaults {
public:
    explicit VirtualUserDefaults(const VirtualRunLoop& loop)
        : loop_(loop) {}

    std::optional<PropertyValue> objectForKey(const std::string& key) const override;
    void setObject(const std::string& key, PropertyValue value) override;
    void removeObject(const std::string& key) override;
    void registerDefaults(const PropertyDictionary& defaults) override;

    // What would be on disk.
    const PropertyDictionary& stored() const { return stored_; }
    const PropertyDictionary& registered() const { return registered_; }

private:
    const VirtualRunLoop& loop_;
    PropertyDictionary stored_;
    PropertyDictionary registered_;
};

} // namespace rb
