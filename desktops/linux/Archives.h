#pragma once

#include "platform/Archives.h"

#include <atomic>
#include <mutex>
#include <string>

namespace rb {

class Log;

// Archives in the program's data folder. A file is replaced as a whole, so that at any instant the old or the new one
// is there; one that can't be understood is set aside under another name; one that isn't ours to read or to replace (a
// link, a pipe, someone else's) is left alone, and what would go into it stays in memory. Data rest in the file and are
// read from there when they are wanted.
class LinuxArchives final : public Archives {
public:
    // The log outlives it.
    LinuxArchives(std::string folder, Log& log);

    std::string location(const std::string& fileName) override;
    std::optional<std::vector<ArchiveObject>> read(const std::string& path, const ArchiveClass& objectClass) override;
    bool write(const std::string& path, const ArchiveClass& objectClass,
               const std::vector<ArchiveObject>& objects) override;

private:
    void giveUp(const std::string& reason);
    // Each reason once in a row.
    void complain(const std::string& reason);

    std::string folder_;
    Log& log_;
    std::atomic<bool> memoryOnly_ = false;
    std::mutex mutex_;
    std::string lastComplaint_;
};

} // namespace rb
