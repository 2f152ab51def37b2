#pragma once

#include "platform/Bytes.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace rb {

struct FileFailure {
    bool targetExists = false; // something stands at the target; nothing was changed
    std::string reason = {};   // the system's words
};

// A file that was opened to be read: the same file, whatever happens to its name meanwhile. Any thread.
class OpenedFile {
public:
    virtual ~OpenedFile() = default;
    // All of its bytes. Null when they can't be read, when they were changed since the file was opened, as far as its
    // size and its time of change tell, and when `givenUp` becomes true. May block.
    virtual SharedBytes contents(const std::atomic<bool>& givenUp) const = 0;
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
    // Null for what can't be opened, is no ordinary file or has more than `mostBytes`.
    virtual std::shared_ptr<const OpenedFile> open(const std::string& path, std::size_t mostBytes) const = 0;
};

} // namespace rb
