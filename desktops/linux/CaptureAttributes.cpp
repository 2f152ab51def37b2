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

struct NodeFree {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeFree>;

std::string binaryOf(const Node& node) {
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(node.get(), &bytes, &size);
    const std::unique_ptr<char, void (*)(char*)> owned(bytes, [](char* memory) { plist_to_bin_free(memory); });
    return bytes == nullptr ? std::string() : std::string(bytes, size);
}

} // namespace

std::optional<PropertyArray> numbersOfPropertyList(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > longestAttribute) {
        return std::nullopt;
    }
    plist_t raw = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &raw);
    const Node root(raw);
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

std::string captureMark() {
    return binaryOf(Node(plist_new_bool(1)));
}

std::string captureRectangle(const Rect& rect) {
    const Node array(plist_new_array());
    for (const double number : {rect.x, rect.y, rect.width, rect.height}) {
        plist_array_append_item(array.get(), plist_new_real(number)); // the array owns it
    }
    return binaryOf(array);
}

bool writeAttribute(int file, const char* name, const std::string& bytes) {
    return fsetxattr(file, name, bytes.data(), bytes.size(), 0) == 0;
}

} // namespace rb
