#pragma once

#include "platform/PropertyList.h"

#import <Foundation/Foundation.h>

#include <optional>

// Property-list values of the seam as Foundation's objects and back.
namespace rb {

// Never nil.
id propertyList(const PropertyValue& value);
NSDictionary<NSString*, id>* propertyList(const PropertyDictionary& dictionary);

// Nothing for nil and for an object that has no counterpart (a date), also deep inside a collection: a part that went
// missing here would be lost for good when the value is written back.
std::optional<PropertyValue> propertyValue(id object);

} // namespace rb
