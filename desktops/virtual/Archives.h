#pragma once

#include "platform/Archives.h"

#include <map>
#include <string>
#include <vector>

namespace rb {

// Archives in memory, object by object; they outlive the product, so that a test can start it again.
class VirtualArchives final : public Archives {
public:
    std::string location(const std::string& fileName) override {
        return broken_ ? "" : "/Users/rb/Library/Application Support/Rook Bay/" + fileName;
    }
    std::optional<std::vector<ArchiveObject>> read(const std::string& path, const ArchiveClass& /*type*/) override {
        const auto found = files_.find(path);
        return found == files_.end() ? std::nullopt : std::optional(found->second);
    }
    bool write(const std::string& path, const ArchiveClass& objectClass,
               const std::vector<ArchiveObject>& objects) override {
        ++writes_;
        if (broken_) {
            return false;
        }
        className_ = objectClass.name;
        files_[path] = objects;
        return true;
    }

    std::map<std::string, std::vector<ArchiveObject>>& files() { return files_; }
    // What was written last was of this class.
    const std::string& className() const { return className_; }
    int writes() const { return writes_; }
    // The disk is full or away.
    void setBroken(bool broken) { broken_ = broken; }

private:
    std::map<std::string, std::vector<ArchiveObject>> files_;
    std::string className_;
    int writes_ = 0;
    bool broken_ = false;
};

} // namespace rb
