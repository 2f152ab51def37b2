#include "platform/Files.h"

#include <vector>

namespace rb {

std::string standardizedPath(const std::string& path, const std::string& homeDirectory) {
    std::string expanded = path;
    if (path == "~" || path.starts_with("~/")) {
        expanded = homeDirectory + path.substr(1);
    }
    const bool absolute = expanded.starts_with('/');
    std::vector<std::string> kept;
    for (std::size_t start = 0; start < expanded.size();) {
        const std::size_t end = std::min(expanded.find('/', start), expanded.size());
        const std::string part = expanded.substr(start, end - start);
        start = end + 1;
        if (part.empty() || part == ".") {
            continue;
        }
        if (part == ".." && (absolute || !kept.empty())) {
            if (!kept.empty()) {
                kept.pop_back();
            }
            continue;
        }
        kept.push_back(part);
    }
    std::string result;
    for (const std::string& part : kept) {
        if (absolute || !result.empty()) {
            result += '/';
        }
        result += part;
    }
    return result.empty() && absolute ? "/" : result;
}

std::string lastPathComponent(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

std::string deletingLastPathComponent(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return {};
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string appendingPathComponent(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

} // namespace rb
