#pragma once

#include "platform/Archives.h"
#include "platform/Log.h"

namespace rb {

// Keyed archives with secure coding in the user's Application Support.
class MacArchives final : public Archives {
public:
    // The log outlives it.
    explicit MacArchives(Log& log)
        : log_(log) {}

    std::string location(const std::string& fileName) override;
    std::optional<std::vector<ArchiveObject>> read(const std::string& path, const ArchiveClass& objectClass) override;
    bool write(const std::string& path, const ArchiveClass& objectClass,
               const std::vector<ArchiveObject>& objects) override;

private:
    Log& log_;
};

} // namespace rb
