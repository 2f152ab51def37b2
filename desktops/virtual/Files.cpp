#include "desktops/virtual/Files.h"

namespace rb {

FileFacts VirtualFiles::facts(const std::string& path) const {
    const auto found = files_.find(path);
    return found == files_.end() ? FileFacts{} : found->second;
}

std::optional<std::string> VirtualFiles::createEmptyFile(const std::string& path) {
    if (refusal_) {
        return refusal_;
    }
    if (files_.contains(path)) {
        return "there is something already";
    }
    addDocument(path);
    return std::nullopt;
}

void VirtualFiles::addImage(const std::string& path, Size size) {
    files_[path] = {.exists = true, .isImage = true};
    imageSizes_[path] = size;
}

Size VirtualFiles::imageSize(const std::string& path) const {
    const auto found = imageSizes_.find(path);
    return found == imageSizes_.end() ? Size{} : found->second;
}

} // namespace rb
