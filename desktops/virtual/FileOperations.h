#pragma once

#include "desktops/virtual/Files.h"
#include "platform/FileOperations.h"
#include "platform/RunLoop.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace rb {

// Changes to the disk in memory.
class VirtualFileOperations final : public FileOperations {
public:
    VirtualFileOperations(VirtualFiles& files, RunLoop& loop)
        : files_(files)
        , later_(loop) {}

    void moveItem(const std::string& from, const std::string& to, Done done) override;
    void copyItem(const std::string& from, const std::string& to, Done done) override;
    void trashItem(const std::string& path, Done done) override;
    // "bytes of PATH", unless VirtualFiles::change() is called meanwhile.
    std::shared_ptr<const OpenedFile> open(const std::string& path, std::size_t mostBytes) const override;

    // From now on every change takes that many seconds, as to another disk; 0: none.
    void setDuration(double seconds) { duration_ = seconds; }
    // From now on everything fails for this reason; empty ends it.
    void refuse(std::string reason) { refusal_ = std::move(reason); }
    // Once, between a name's choice and the next change.
    void before(std::function<void()> somethingElse) { before_ = std::move(somethingElse); }
    const std::vector<std::string>& trashed() const { return trashed_; }

private:
    void run(const std::function<std::optional<FileFailure>()>& change, Done done);
    std::optional<FileFailure> refusedFor(const std::string& from, const std::string& to);

    VirtualFiles& files_;
    DelayedCalls later_;
    double duration_ = 0;
    std::string refusal_;
    std::function<void()> before_;
    std::vector<std::string> trashed_;
};

} // namespace rb
