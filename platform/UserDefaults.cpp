#include "platform/UserDefaults.h"

#include <charconv>
#include <cmath>

namespace rb {

namespace {

// The whole number at the beginning of a text ("42 s" is 42), 0 when there is none.
std::int64_t leadingInteger(const std::string& text) {
    const auto start = text.find_first_not_of(" \t\n");
    if (start == std::string::npos) {
        return 0;
    }
    std::int64_t value = 0;
    std::from_chars(text.data() + start + (text[start] == '+' ? 1 : 0), text.data() + text.size(), value);
    return value;
}

// Cut towards zero and kept within range, since the conversion itself would be undefined outside it.
std::int64_t truncated(double number) {
    constexpr double limit = 9.2e18;
    if (std::isnan(number)) {
        return 0;
    }
    return static_cast<std::int64_t>(std::fmin(std::fmax(number, -limit), limit));
}

} // namespace

std::int64_t UserDefaults::integerForKey(const std::string& key) const {
    const auto value = objectForKey(key);
    if (!value) {
        return 0;
    }
    if (const auto* flag = value->get<bool>()) {
        return *flag ? 1 : 0;
    }
    if (const auto* integer = value->get<std::int64_t>()) {
        return *integer;
    }
    if (const auto* number = value->get<double>()) {
        return truncated(*number);
    }
    if (const auto* text = value->get<std::string>()) {
        return leadingInteger(*text);
    }
    return 0;
}

bool UserDefaults::boolForKey(const std::string& key) const {
    const auto value = objectForKey(key);
    if (value) {
        if (const auto* number = value->get<double>()) {
            return *number != 0;
        }
        if (const auto* text = value->get<std::string>()) {
            const char first = text->empty() ? '0' : (*text)[0];
            return first == 'Y' || first == 'y' || first == 'T' || first == 't' || leadingInteger(*text) != 0;
        }
    }
    return integerForKey(key) != 0;
}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) const {
    const auto value = objectForKey(key);
    if (!value) {
        return std::nullopt;
    }
    if (const auto* text = value->get<std::string>()) {
        return *text;
    }
    if (const auto* integer = value->get<std::int64_t>()) {
        return std::to_string(*integer);
    }
    return std::nullopt;
}

std::optional<std::vector<std::string>> UserDefaults::stringArrayForKey(const std::string& key) const {
    const auto value = objectForKey(key);
    const auto* array = value ? value->get<PropertyArray>() : nullptr;
    if (!array) {
        return std::nullopt;
    }
    std::vector<std::string> strings;
    strings.reserve(array->size());
    for (const PropertyValue& element : *array) {
        const auto* text = element.get<std::string>();
        if (!text) {
            return std::nullopt;
        }
        strings.push_back(*text);
    }
    return strings;
}

} // namespace rb
