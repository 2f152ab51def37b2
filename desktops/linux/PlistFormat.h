#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace rb {

// How binary property lists are laid out: after the magic word the objects, then a table of their offsets, then a
// trailer. All numbers are big-endian.
namespace PlistFormat {

inline constexpr std::string_view magic = "bplist00";
inline constexpr std::size_t trailerSize = 32;
inline constexpr std::uint64_t mostObjects = 1'000'000;
// Of an object that any of its kinds needs before its contents.
inline constexpr std::size_t longestHead = 10;

enum class Kind : std::uint8_t {
    Fixed = 0,
    Integer = 1,
    Real = 2,
    Date = 3,
    Data = 4,
    Ascii = 5,
    Wide = 6,
    Uid = 8,
    Array = 10,
    Set = 12,
    Dictionary = 13
};

struct Trailer {
    unsigned offsetSize = 0; // bytes of an entry of the table
    unsigned refSize = 0;    // bytes of a reference
    std::uint64_t objects = 0;
    std::uint64_t top = 0;
    std::uint64_t table = 0; // where it begins
};

struct Object {
    Kind kind = Kind::Fixed;
    std::uint64_t head = 1;     // bytes before its contents
    std::uint64_t bytes = 0;    // of its own contents
    std::uint64_t children = 0; // references, which follow the head

    // All of it.
    std::uint64_t size(unsigned refSize) const { return head + bytes + children * refSize; }
};

std::uint64_t number(std::string_view bytes);
// Appends the number in that many bytes.
template <typename Text>
void append(Text& text, std::uint64_t value, unsigned size) {
    while (size-- > 0) {
        text += static_cast<char>(value >> (8 * size));
    }
}

// The last bytes of a file of that size; nothing when they contradict themselves or the size.
std::optional<Trailer> trailer(std::string_view bytes, std::uint64_t fileSize);
// An object that begins with these bytes, of which the head is enough; nothing for an unknown kind or a size that no
// file has.
std::optional<Object> object(std::string_view start);

} // namespace PlistFormat

} // namespace rb
