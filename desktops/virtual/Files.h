#pragma once

#include "motion/Geometry.h"
#include "platform/Files.h"

#include <map>
#include <string>

namespace rb {

// A disk in memory. The home folder is /Users/rb.
class VirtualFiles final : public Files {
public:
    FileFacts facts(const std::string& path) const override;
    std::string homeDirectory() const override { return "/Users/rb"; }

    void addDocument(const std::string& path) { files_[path] = {.exists = true}; }
    // A picture file; `size` in pixels, upright. Without a size the file is damaged and can't be decoded.
    void addImage(const std::string& path, Size size = {});
    void addFolder(const std::string& path) { files_[path] = {.exists = true, .isDirectory = true}; }
    void addPackage(const std::string& path) {
        files_[path] = {.exists = true, .isDirectory = true, .isPackage = true};
    }
    void remove(const std::string& path) { files_.erase(path); }
    // Zero for what is not a picture that can be decoded.
    Size imageSize(const std::string& path) const;

private:
    std::map<std::string, FileFacts> files_;
    std::map<std::string, Size> imageSizes_;
};

} // namespace rb
