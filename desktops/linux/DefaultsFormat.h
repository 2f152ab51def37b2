#pragma once

#include "platform/PropertyList.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// The text form of the user defaults: JSON that people can read and edit. What JSON doesn't know is a dictionary with
// one key that begins with "$":
//   {"$data": "…"}        bytes, base64
//   {"$string": "…"}      a string that isn't UTF-8 (a file's name can be any bytes), base64
//   {"$real": "nan"}      also "inf" and "-inf"
// A key of the program's own that begins with "$" is written with one more "$".
// Integers have neither point nor exponent, reals have one of them. Pure functions, any thread.
namespace rb {

inline constexpr std::size_t longestDefaults = std::size_t{4} * 1024 * 1024; // bytes
inline constexpr int deepestDefaults = 64;                                   // containers within one another

struct ParsedDefaults {
    std::optional<PropertyDictionary> values = std::nullopt;
    // Why it isn't valid, and for mistakes in the JSON itself the line; empty when it is valid.
    std::string error = {};
};

// Strict: one object of values as above and nothing else. Duplicate keys, null, malformed UTF-8, control characters
// in strings, NUL bytes, numbers beyond the types' ranges and too much depth or length are errors.
ParsedDefaults parseDefaults(std::string_view text);

// The text of the values, which parseDefaults reads back as the same values; nothing when they are too deep, too
// long or have a key that isn't UTF-8.
std::optional<std::string> writeDefaults(const PropertyDictionary& values);

} // namespace rb
