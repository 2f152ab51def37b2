#include "desktops/virtual/Files.h"

namespace rb {

FileFacts VirtualFiles::facts(const std::string& path) const {
    const auto found = files_.find(path);
    return found == files_.end() ? FileFacts{} : found->second;
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
