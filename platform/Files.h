#pragma once

#include <optional>
#include <string>

namespace rb {

// What the system knows of a file at a path, in its own way: a dangling link doesn't exist, and whether a link to a
// folder counts as a folder is the system's habit (macOS: no, Linux: yes). All false for a path that leads nowhere.
struct FileFacts {
    bool exists = false;
    bool isDirectory = false;
    bool isPackage = false; // a directory that the system shows as one file
    bool isImage = false;   // its content type is a picture
    // The path itself is a link, wherever it leads; one that dangles is nothing but this.
    bool isSymbolicLink = false;
};

// Files by absolute path, UTF-8. Main thread only.
class Files {
public:
    virtual ~Files() = default;
    virtual FileFacts facts(const std::string& path) const = 0;
    virtual std::string homeDirectory() const = 0;
    // The user's Desktop folder; it may not exist.
    virtual std::string desktopDirectory() const = 0;
    // Makes an empty file where nothing is, not even a dangling link. Nothing on success, else why not, in words for
    // the user; empty when the system has none.
    virtual std::optional<std::string> createEmptyFile(const std::string& path) = 0;
};

// The path with a leading tilde expanded and ".", ".." and doubled slashes resolved by name; links are not followed.
// Empty for an empty path.
std::string standardizedPath(const std::string& path, const std::string& homeDirectory);
// What stands after the last slash.
std::string lastPathComponent(const std::string& path);
// What stands before the last slash; "/" for what is directly in the root.
std::string deletingLastPathComponent(const std::string& path);
// The name in the folder.
std::string appendingPathComponent(const std::string& folder, const std::string& name);

} // namespace rb
