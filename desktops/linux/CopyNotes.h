#pragma once

#include "desktops/linux/UniqueFd.h"

#include <string>

// Hidden folders in which copies are made, noted for as long as they last, so that the next start removes what a
// program that was killed in mid-copy left behind. Any thread.
namespace rb {

// A folder of its own, ".rookbay-…", noted and in use as long as this lives. Then it goes, empty by now, and the note.
class CopyFolder {
public:
    // In `folder`. When it can't be made the path is empty; errno says why.
    explicit CopyFolder(const std::string& folder);
    ~CopyFolder();
    CopyFolder(const CopyFolder&) = delete;
    CopyFolder& operator=(const CopyFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
    UniqueFd inUse_;
};

// Removes all folders that are noted and that no program uses, with what they hold: copies alone.
void removeForgottenCopies();
bool hasForgottenCopies();

} // namespace rb
