#pragma once

#include "platform/Archives.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rb {

// A finished archive, in the library's own memory.
struct EncodedArchive {
    std::unique_ptr<char, void (*)(char*)> bytes;
    std::size_t size = 0;
};

// Archives as macOS's keyed archiver lays them out: a binary property list with all objects in one list, which refer to
// each other by number. Objects with texts that can't be stored (no well-formed UTF-8, or a character of zero) are left
// out. Any thread.
EncodedArchive encodeArchive(const ArchiveClass& objectClass, const std::vector<ArchiveObject>& objects);

struct DecodedArchive {
    // Nothing when these bytes are no archive of an array.
    std::optional<std::vector<ArchiveObject>> objects;
    std::string fault = {}; // why not
    // Elements that were left out: of another class, or with a value of another kind under one of the keys.
    std::size_t damaged = 0;
};
DecodedArchive decodeArchive(const ArchiveClass& objectClass, std::string_view file);

} // namespace rb
