#pragma once

#include "desktops/linux/UniqueFd.h"

#include <cstddef>
#include <optional>
#include <string>

namespace rb {

// A package while it is being downloaded: a new file for the user alone, in a folder for the user alone, under a name
// that we make. It is removed with this object unless it was kept. Failures are words; nothing is success.
class PackageFile {
public:
    PackageFile() = default;
    ~PackageFile();
    PackageFile(const PackageFile&) = delete;
    PackageFile& operator=(const PackageFile&) = delete;

    // Clears the folder of what earlier downloads left. The version must be one by isVersion().
    std::optional<std::string> create(const std::string& folder, const std::string& version);
    std::optional<std::string> write(const char* bytes, std::size_t count);

    int descriptor() const { return file_.get(); }
    const std::string& path() const { return path_; }
    // From now on it stays.
    void keep() { kept_ = true; }

private:
    UniqueFd file_;
    std::string path_;
    bool kept_ = false;
};

} // namespace rb
