#pragma once

#include "platform/FileOperations.h"

#include <atomic>
#include <memory>

class QThreadPool;

namespace rb {

class RunLoop;

// Changes to files by the kernel's exclusive calls. Renames happen at once. Whatever has to be copied is, one after
// another, by a thread of its own: into a hidden folder beside the target, compared, put in place, and only then what
// was copied is removed. Its end gives up what is under way and waits for the thread.
class LinuxFileOperations final : public FileOperations {
public:
    // The loop outlives it.
    explicit LinuxFileOperations(RunLoop& loop);
    ~LinuxFileOperations() override;
    LinuxFileOperations(const LinuxFileOperations&) = delete;
    LinuxFileOperations& operator=(const LinuxFileOperations&) = delete;

    void moveItem(const std::string& from, const std::string& to, Done done) override;
    void copyItem(const std::string& from, const std::string& to, Done done) override;
    // By the rules that file managers share: on the file's own file system where that has a Trash, else in the home's.
    void trashItem(const std::string& path, Done done) override;
    std::shared_ptr<const OpenedFile> open(const std::string& path, std::size_t mostBytes) const override;

private:
    using Work = std::function<std::optional<FileFailure>(const std::atomic<bool>& cancelled)>;
    void inBackground(Work work, Done done);

    RunLoop& loop_;
    std::atomic<bool> cancelled_ = false;
    std::unique_ptr<QThreadPool> worker_; // from the first copy on
};

} // namespace rb
