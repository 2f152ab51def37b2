#pragma once

#include "platform/Bytes.h"

#include <functional>
#include <optional>
#include <string>

namespace rb {

struct FileFailure {
    bool targetExists = false; // something stands at the target; nothing was changed
    std::string reason = {};   // the system's words
};

// Changes to the user's files. Paths are absolute, UTF-8; links are treated as themselves. Nothing that exists is ever
// overwritten, also when it appears at the last moment, and after a failure the source is whole. Main thread only.
class FileOperations {
public:
    // Told exactly once, on the main thread: before the call returns where nothing takes time (a rename), else in a
    // later turn, when work off the main thread has ended. Nothing means success; may be empty. What is under way when
    // the program quits is given up: the source is whole, the target untouched, and nobody is told.
    using Done = std::function<void(const std::optional<FileFailure>& failure)>;

    virtual ~FileOperations() = default;
    // Also to another file system, where the copy is compared before the source goes.
    virtual void moveItem(const std::string& from, const std::string& to, Done done) = 0;
    // Folders with all they hold.
    virtual void copyItem(const std::string& from, const std::string& to, Done done) = 0;
    // From where the user can put it back; never deletes instead.
    virtual void trashItem(const std::string& path, Done done) = 0;
    // All bytes of a file; null when they can't be read.
    virtual SharedBytes contents(const std::string& path) const = 0;
};

} // namespace rb
