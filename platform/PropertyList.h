#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace rb {

class PropertyValue;
using PropertyArray = std::vector<PropertyValue>;
using PropertyDictionary = std::map<std::string, PropertyValue>;
struct PropertyData {
    std::vector<std::uint8_t> bytes;
    friend bool operator==(const PropertyData&, const PropertyData&) = default;
};

// A property-list value as user defaults and preference domains hold it. Strings are UTF-8.
class PropertyValue {
public:
    using Storage =
        std::variant<bool, std::int64_t, double, std::string, PropertyData, PropertyArray, PropertyDictionary>;

    PropertyValue(bool value)
        : storage_(value) {} // NOLINT(google-explicit-constructor)
    PropertyValue(int value)
        : storage_(std::int64_t{value}) {} // NOLINT(google-explicit-constructor)
    PropertyValue(std::int64_t value)
        : storage_(value) {} // NOLINT(google-explicit-constructor)
    PropertyValue(double value)
        : storage_(value) {} // NOLINT(google-explicit-constructor)
    PropertyValue(std::string value)
        : storage_(std::move(value)) {} // NOLINT(google-explicit-constructor)
    PropertyValue(const char* value)
        : storage_(std::string(value)) {} // NOLINT(google-explicit-constructor)
    PropertyValue(PropertyData value)
        : storage_(std::move(value)) {} // NOLINT(google-explicit-constructor)
    PropertyValue(PropertyArray value)
        : storage_(std::move(value)) {} // NOLINT(google-explicit-constructor)
    PropertyValue(PropertyDictionary value)
        : storage_(std::move(value)) {} // NOLINT(google-explicit-constructor)

    // The value as this type, or null when it is of another.
    template <typename Type>
    const Type* get() const {
        return std::get_if<Type>(&storage_);
    }
    const Storage& storage() const { return storage_; }
    friend bool operator==(const PropertyValue&, const PropertyValue&) = default;

private:
    Storage storage_;
};

} // namespace rb
