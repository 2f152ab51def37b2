#pragma once

#include <atomic>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace rb {

// A faithful copy of a file, link or folder with all it holds: contents with their holes, permissions with their lists,
// times and the user's extended attributes. Remembers what it copied, so that only that is removed afterwards. Devices,
// sockets and pipes are refused. Error numbers, 0 for success.
class TreeCopy {
public:
    // Looked at again and again, from whichever thread copies: once true, make() ends with ECANCELED.
    explicit TreeCopy(const std::atomic<bool>& cancelled)
        : cancelled_(cancelled) {}
    // `to` must not exist. What is there after a failure goes with removeCopy(). A folder stays one that its owner may
    // write until finish(), for no other can be renamed.
    int make(const std::string& from, const std::string& to);
    // The copy, which was renamed to there, gets the permissions of the source in full. After a successful make().
    void finish(const std::string& root) const;
    // Compares, then removes from the source whatever is still as it was copied; what came to it since stays, and then
    // the error is ENOTEMPTY. A source that is gone already is no error. Call it after a successful make().
    int removeSource();
    bool removedAny() const { return removedAny_; }
    void removeCopy() { removeCopyAt(to_); }
    // The copy, which was renamed to there.
    void removeCopyAt(const std::string& root);

private:
    struct Entry {
        std::string path; // after the root: empty, "/name", "/folder/name"
        struct stat facts;
    };
    int copyEntry(const std::string& path, int depth);
    int copyFolder(const std::string& path, const struct stat& facts, int depth);
    int copyFile(const std::string& path, const struct stat& facts) const;
    int copyLink(const std::string& path, const struct stat& facts) const;
    bool isUnchanged(const Entry& entry) const;

    const std::atomic<bool>& cancelled_;
    std::string from_;
    std::string to_;
    struct stat workshop_ {};    // the folder in which the copy is made
    std::vector<Entry> entries_; // a folder before what it holds
    bool removedAny_ = false;
};

} // namespace rb
