#pragma once

#include "platform/ChildProcesses.h"

namespace rb {

// NSTask with pipes; helpers lie in the bundle's resources.
class MacChildProcesses final : public ChildProcesses {
public:
    std::optional<std::string> resourcePath(const std::string& name) const override;
    std::unique_ptr<ChildProcess> start(ChildStart start) override;
    std::optional<std::string> createTemporaryFile(const std::string& name) override;
    std::optional<std::string> takeTemporaryFile(const std::string& path, std::size_t limit) override;
};

} // namespace rb
