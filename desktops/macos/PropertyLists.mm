#include "desktops/macos/PropertyLists.h"

#include "desktops/macos/Bridge.h"

#include <utility>

namespace rb {

namespace {

// NSNumber holds booleans, integers and floating-point numbers; only Core Foundation tells which.
PropertyValue numberValue(NSNumber* number) {
    CFTypeRef native = (__bridge CFTypeRef)number;
    if (CFGetTypeID(native) == CFBooleanGetTypeID()) {
        return number.boolValue != NO;
    }
    if (CFNumberIsFloatType(static_cast<CFNumberRef>(native)) != 0) {
        return number.doubleValue;
    }
    return static_cast<std::int64_t>(number.longLongValue);
}

PropertyData dataValue(NSData* data) {
    const auto* bytes = static_cast<const std::uint8_t*>(data.bytes);
    return bytes != nullptr ? PropertyData{{bytes, bytes + data.length}} : PropertyData{};
}

std::optional<PropertyValue> arrayValue(NSArray* array) {
    PropertyArray values;
    for (id element in array) {
        auto value = propertyValue(element);
        if (!value) {
            return std::nullopt;
        }
        values.push_back(std::move(*value));
    }
    return PropertyValue(std::move(values));
}

std::optional<PropertyValue> dictionaryValue(NSDictionary* dictionary) {
    PropertyDictionary values;
    for (NSString* key in dictionary) {
        auto value = propertyValue(dictionary[key]);
        if (!value) {
            return std::nullopt;
        }
        values.insert_or_assign(utf8String(key), std::move(*value));
    }
    return PropertyValue(std::move(values));
}

struct ToObject {
    id operator()(bool value) const { return value ? @YES : @NO; }
    id operator()(std::int64_t value) const { return @(value); }
    id operator()(double value) const { return @(value); }
    id operator()(const std::string& value) const { return nsString(value); }
    id operator()(const PropertyData& value) const {
        return [NSData dataWithBytes:value.bytes.data() length:value.bytes.size()];
    }
    id operator()(const PropertyArray& values) const {
        NSMutableArray* array = [NSMutableArray array];
        for (const PropertyValue& value : values) {
            [array addObject:propertyList(value)];
        }
        return array;
    }
    id operator()(const PropertyDictionary& values) const { return propertyList(values); }
};

} // namespace

id propertyList(const PropertyValue& value) {
    return std::visit(ToObject{}, value.storage());
}

NSDictionary<NSString*, id>* propertyList(const PropertyDictionary& dictionary) {
    NSMutableDictionary<NSString*, id>* native = [NSMutableDictionary dictionary];
    for (const auto& [key, value] : dictionary) {
        native[nsString(key)] = propertyList(value);
    }
    return native;
}

std::optional<PropertyValue> propertyValue(id object) {
    if ([object isKindOfClass:NSString.class]) {
        return PropertyValue(utf8String(object));
    }
    if ([object isKindOfClass:NSNumber.class]) {
        return numberValue(object);
    }
    if ([object isKindOfClass:NSData.class]) {
        return PropertyValue(dataValue(object));
    }
    if ([object isKindOfClass:NSArray.class]) {
        return arrayValue(object);
    }
    if ([object isKindOfClass:NSDictionary.class]) {
        return dictionaryValue(object);
    }
    return std::nullopt;
}

} // namespace rb
