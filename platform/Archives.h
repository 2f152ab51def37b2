#pragma once

#include "platform/Blob.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace rb {

// Seconds since 1970.
struct ArchiveDate {
    double seconds = 0;
    friend bool operator==(const ArchiveDate&, const ArchiveDate&) = default;
};
// No value, an integer, a text (UTF-8), data, texts, or a date.
using ArchiveValue =
    std::variant<std::monostate, std::int64_t, std::string, SharedBlob, std::vector<std::string>, ArchiveDate>;
using ArchiveObject = std::map<std::string, ArchiveValue>;

enum class ArchiveKind { Integer, String, Data, Strings, Date };

// What the objects of an archive look like.
struct ArchiveClass {
    std::string name;
    std::map<std::string, ArchiveKind> keys;
};

// Keyed archives in the program's own private folder: a binary property list whose root is an array of objects of one
// class. A file that one desktop has written can be read by any other.
class Archives {
public:
    virtual ~Archives() = default;

    // Where the archive of that file name is; its folder is made, for the user alone. Empty when that can't be done.
    // Main thread only.
    virtual std::string location(const std::string& fileName) = 0;
    // The objects in their order, each with the keys whose values are of the kind that the class says; nothing when
    // the file isn't there or isn't such an archive. Main thread only.
    virtual std::optional<std::vector<ArchiveObject>> read(const std::string& path,
                                                           const ArchiveClass& objectClass) = 0;
    // Replaces the file as a whole, readable for the user alone. False leaves the old one. Data may rest in the file
    // from then on. Any thread, one write of a path at a time.
    virtual bool write(const std::string& path, const ArchiveClass& objectClass,
                       const std::vector<ArchiveObject>& objects) = 0;
};

} // namespace rb
