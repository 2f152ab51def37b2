#pragma once

#include "platform/Archives.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// A finished archive, with its data where they are: texts[0], data[0], texts[1], … up to a last text.
struct EncodedArchive {
    std::vector<std::string> texts; // none when memory ran out
    std::vector<SharedBlob> data;
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
// The data stay in the file until somebody wants them.
DecodedArchive decodeArchive(const ArchiveClass& objectClass, const std::shared_ptr<const ByteStore>& file);

} // namespace rb
