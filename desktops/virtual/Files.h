#pragma once

#include "motion/Geometry.h"
#include "platform/Files.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace rb {

// A disk in memory. The home folder is /Users/rb.
class VirtualFiles final : public Files {
public:
    FileFacts facts(const std::string& path) const override;
    std::string homeDirectory() const override { return "/Users/rb"; }
    std::string desktopDirectory() const override { return "/Users/rb/Desktop"; }
    std::optional<std::string> createEmptyFile(const std::string& path) override;

    void addDocument(const std::string& path) { files_[path] = {.exists = true}; }
    // A picture file; `size` in pixels, upright. Without a size the file is damaged and can't be decoded.
    void addImage(const std::string& path, Size size = {});
    void addFolder(const std::string& path) { files_[path] = {.exists = true, .isDirectory = true}; }
    void addPackage(const std::string& path) {
        files_[path] = {.exists = true, .isDirectory = true, .isPackage = true};
    }
    // A link that leads nowhere.
    void addDanglingLink(const std::string& path) { files_[path] = {.isSymbolicLink = true}; }
    void remove(const std::string& path) {
        files_.erase(path);
        changes_.erase(path);
    }
    // Somebody writes into the file.
    void change(const std::string& path) { ++*changesOf(path); }
    // How often, for as long as the file is there; whoever holds this holds the file open.
    std::shared_ptr<const int> changes(const std::string& path) const { return changesOf(path); }
    // One entry; what a folder holds isn't followed.
    void copy(const std::string& from, const std::string& to) {
        files_[to] = files_[from];
        imageSizes_[to] = imageSizes_[from];
    }
    // Zero for what is not a picture that can be decoded.
    Size imageSize(const std::string& path) const;
    // From now on nothing can be made, for this reason; without one it can again.
    void refuseNewFiles(std::optional<std::string> reason) { refusal_ = std::move(reason); }

private:
    std::map<std::string, FileFacts> files_;
    std::shared_ptr<int> changesOf(const std::string& path) const {
        auto& changes = changes_[path];
        if (!changes) {
            changes = std::make_shared<int>(0);
        }
        return changes;
    }

    std::map<std::string, Size> imageSizes_;
    mutable std::map<std::string, std::shared_ptr<int>> changes_;
    std::optional<std::string> refusal_;
};

} // namespace rb
