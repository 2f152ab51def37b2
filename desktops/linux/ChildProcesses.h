#pragma once

#include "platform/ChildProcesses.h"

namespace rb {

class RunLoop;

// Helpers as children with pipes, followed in the event loop without a thread. They are looked for beside the program
// and then in ../lib/rookbay/ and the folder that was given when the program was built.
class LinuxChildProcesses final : public ChildProcesses {
public:
    explicit LinuxChildProcesses(RunLoop& runLoop)
        : runLoop_(runLoop) {}

    std::optional<std::string> resourcePath(const std::string& name) const override;
    std::unique_ptr<ChildProcess> start(ChildStart start) override;
    std::optional<std::string> createTemporaryFile(const std::string& name) override;
    std::optional<std::string> takeTemporaryFile(const std::string& path, std::size_t limit) override;

private:
    RunLoop& runLoop_;
};

} // namespace rb
