#pragma once

#include "platform/FileOperations.h"

namespace rb {

class RunLoop;

// NSFileManager, which refuses to replace what is there. Renames happen at once; copies are made off the main thread,
// aside, in a folder that the system clears away should the program end in the middle.
class MacFileOperations final : public FileOperations {
public:
    // The loop outlives it.
    explicit MacFileOperations(RunLoop& loop)
        : loop_(loop) {}

    void moveItem(const std::string& from, const std::string& to, Done done) override;
    void copyItem(const std::string& from, const std::string& to, Done done) override;
    void trashItem(const std::string& path, Done done) override;
    std::shared_ptr<const OpenedFile> open(const std::string& path, std::size_t mostBytes) const override;

private:
    void inBackground(std::function<std::optional<FileFailure>()> work, Done done);

    RunLoop& loop_;
};

} // namespace rb
