#include "desktops/linux/PlistFormat.h"

namespace rb::PlistFormat {

std::uint64_t number(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) {
        value = value << 8U | static_cast<unsigned char>(byte);
    }
    return value;
}

std::optional<Trailer> trailer(std::string_view bytes, std::uint64_t fileSize) {
    if (bytes.size() != trailerSize || fileSize < magic.size() + trailerSize) {
        return std::nullopt;
    }
    const Trailer found{.offsetSize = static_cast<unsigned>(number(bytes.substr(6, 1))),
                        .refSize = static_cast<unsigned>(number(bytes.substr(7, 1))),
                        .objects = number(bytes.substr(8, 8)),
                        .top = number(bytes.substr(16, 8)),
                        .table = number(bytes.substr(24, 8))};
    const std::uint64_t end = fileSize - trailerSize;
    const bool isSound = found.offsetSize >= 1 && found.offsetSize <= 8 && found.refSize >= 1 && found.refSize <= 8 &&
                         found.objects > 0 && found.objects <= mostObjects && found.top < found.objects &&
                         found.table >= magic.size() && found.table <= end &&
                         found.objects * found.offsetSize <= end - found.table;
    return isSound ? std::optional(found) : std::nullopt;
}

std::optional<Object> object(std::string_view start) {
    if (start.empty()) {
        return std::nullopt;
    }
    Object found{.kind = static_cast<Kind>(number(start.substr(0, 1)) >> 4U)};
    const unsigned low = static_cast<unsigned char>(start[0]) & 0xFU;
    std::uint64_t count = low;
    constexpr unsigned countFollows = 0xF;
    if (low == countFollows && found.kind >= Kind::Data && found.kind != Kind::Uid) {
        const unsigned marker = start.size() > 1 ? static_cast<unsigned char>(start[1]) : 0;
        const unsigned size = 1U << (marker & 0xFU);
        if (marker >> 4U != static_cast<unsigned>(Kind::Integer) || (marker & 0xFU) > 3 || start.size() < 2 + size) {
            return std::nullopt;
        }
        count = number(start.substr(2, size));
        found.head = 2 + size;
    }
    constexpr std::uint64_t largest = std::uint64_t{1} << 40U;
    if (count > largest) {
        return std::nullopt;
    }
    switch (found.kind) {
    case Kind::Fixed:
        return found;
    case Kind::Integer:
        found.bytes = std::uint64_t{1} << low;
        return low <= 4 ? std::optional(found) : std::nullopt;
    case Kind::Real:
        found.bytes = std::uint64_t{1} << low;
        return low == 2 || low == 3 ? std::optional(found) : std::nullopt;
    case Kind::Date:
        found.bytes = sizeof(double);
        return found;
    case Kind::Data:
    case Kind::Ascii:
        found.bytes = count;
        return found;
    case Kind::Wide:
        found.bytes = 2 * count;
        return found;
    case Kind::Uid:
        found.bytes = std::uint64_t{low} + 1;
        return found;
    case Kind::Array:
    case Kind::Set:
        found.children = count;
        return found;
    case Kind::Dictionary:
        found.children = 2 * count;
        return found;
    }
    return std::nullopt;
}

} // namespace rb::PlistFormat
