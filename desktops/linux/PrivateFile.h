#pragma once

#include <optional>
#include <string>

namespace rb {

// A small file of the user's that we read and replace as a whole. Links are followed as long as the file they lead to
// and its folder are the user's own. Main thread only.
class PrivateFile {
public:
    struct Reading {
        bool readable = false; // false: it is there but isn't the user's regular file of a reasonable size
        std::optional<std::string> bytes = std::nullopt; // nothing when there is no file
    };

    explicit PrivateFile(std::string path)
        : path_(std::move(path)) {}

    Reading read() const;
    // All or nothing, on the disk when it returns, with the permissions that the file had (0600 for a new one).
    // Nothing removes it. False when that fails; the file is as before then.
    bool write(const std::optional<std::string>& bytes) const;
    // Removes what a run that was killed while writing left beside the file.
    void tidy() const;

private:
    std::string path_;
};

} // namespace rb
