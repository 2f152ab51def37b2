#include "desktops/linux/CaptureAttributes.h"

#include <cstdint>
#include <memory>
#include <plist/plist.h>
#include <sys/xattr.h>

namespace rb {

namespace {

constexpr std::size_t longestAttribute = 65536;
constexpr std::uint32_t mostNumbers = 64;

PropertyValue numberOf(plist_t node) {
    double real = 0;
    std::uint64_t integer = 0;
    switch (node != nullptr ? plist_get_node_type(node) : PLIST_NONE) {
    case PLIST_REAL:
        plist_get_real_val(node, &real);
        return real;
    case PLIST_UINT:
        plist_get_uint_val(node, &integer);
        // Negative numbers come as their complement.
        return static_cast<std::int64_t>(integer);
    default:
        return "";
    }
}

} // namespace

std::optional<PropertyArray> numbersOfPropertyList(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > longestAttribute) {
        return std::nullopt;
    }
    plist_t raw = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &raw);
    const std::unique_ptr<void, void (*)(void*)> root(raw, plist_free);
    if (!root || plist_get_node_type(raw) != PLIST_ARRAY || plist_array_get_size(raw) > mostNumbers) {
        return std::nullopt;
    }
    PropertyArray numbers;
    for (std::uint32_t i = 0; i < plist_array_get_size(raw); ++i) {
        numbers.push_back(numberOf(plist_array_get_item(raw, i)));
    }
    return numbers;
}

std::optional<std::string> readAttribute(const std::string& path, const char* name) {
    const ssize_t size = getxattr(path.c_str(), name, nullptr, 0);
    if (size < 0 || static_cast<std::size_t>(size) > longestAttribute) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (size > 0 && getxattr(path.c_str(), name, bytes.data(), bytes.size()) != size) {
        return std::nullopt;
    }
    return bytes;
}

} // namespace rb
