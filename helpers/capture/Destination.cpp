#include "helpers/capture/Destination.h"

#include "helpers/capture/FileName.h"

#include <map>
#include <sys/stat.h>

namespace rb {

namespace {

bool isFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string withoutSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

CaptureDestination refused(const std::string& reason) {
    CaptureDestination destination;
    destination.error = reason;
    return destination;
}

// The format that a file extension in lower case stands for; empty for one that can't be written.
std::string typeOf(const std::string& extension) {
    static const std::map<std::string, std::string> types = {{"png", "png"},  {"jpg", "jpg"},   {"jpeg", "jpg"},
                                                             {"tif", "tiff"}, {"tiff", "tiff"}, {"webp", "webp"}};
    const auto found = types.find(extension);
    return found == types.end() ? std::string() : found->second;
}

} // namespace

CaptureDestination captureDestination(const CaptureArguments& arguments, const CaptureSettings& settings,
                                      const CapturePlaces& places) {
    CaptureDestination to;
    if (const std::string type = typeOf(settings.type); !type.empty()) {
        to.type = to.extension = type;
    }
    to.toClipboard = arguments.clipboard || (settings.toClipboard && !arguments.output);
    to.toFile = !to.toClipboard || arguments.output;
    if (!arguments.output) {
        to.folder = captureFolder(settings, places.home, places.desktop);
        to.fallback = to.folder == places.desktop ? std::string() : places.desktop;
        return to;
    }
    std::string path = *arguments.output;
    if (!path.starts_with('/')) {
        path = places.working + "/" + path;
    }
    const bool meansFolder = path.ends_with('/');
    path = withoutSlashes(std::move(path));
    if (isFolder(path)) {
        to.folder = path;
        return to;
    }
    if (meansFolder) {
        return refused("文件夹“" + path + "”不存在");
    }
    const std::size_t slash = path.rfind('/');
    to.folder = slash == 0 ? "/" : path.substr(0, slash);
    if (!isFolder(to.folder)) {
        return refused("文件夹“" + to.folder + "”不存在");
    }
    const std::string fileName = path.substr(slash + 1);
    const NameParts parts = nameParts(fileName);
    if (parts.extension.empty()) {
        to.name = fileName;
        return to;
    }
    to.type = typeOf(parts.extension);
    if (to.type.empty()) {
        return refused("不能存为 ." + parts.extension + " 文件");
    }
    to.name = parts.name;
    to.extension = fileName.substr(parts.name.size() + 1);
    return to;
}

} // namespace rb
