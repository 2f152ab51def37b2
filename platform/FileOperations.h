#pragma once

#include "platform/Bytes.h"

#include <optional>
#include <string>

namespace rb {

struct FileFailure {
    bool targetExists = false; // something stands at the target; nothing was changed
    std::string reason = {};   // the system's words
};

// Changes to the user's files. Paths are absolute, UTF-8; links are treated as themselves. Nothing that exists is ever
// overwritten, also when it appears at the last moment, and after a failure the source is whole. Nothing returned means
// success. Main thread only; waits until it is done.
class FileOperations {
public:
    virtual ~FileOperations() = default;
    // Also to another file system, where the copy is compared before the source goes.
    virtual std::optional<FileFailure> moveItem(const std::string& from, const std::string& to) = 0;
    // Folders with all they hold.
    virtual std::optional<FileFailure> copyItem(const std::string& from, const std::string& to) = 0;
    // All bytes of a file; null when they can't be read.
    virtual SharedBytes contents(const std::string& path) const = 0;
    // From where the user can put it back; never deletes instead.
    virtual std::optional<FileFailure> trashItem(const std::string& path) = 0;
};

} // namespace rb
