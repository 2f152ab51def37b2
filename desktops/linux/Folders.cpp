#include "desktops/linux/Folders.h"

#include <QByteArray>
#include <array>
#include <cerrno>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

constexpr mode_t forTheUserAlone = 0700;

std::string environment(const char* name) {
    return qgetenv(name).toStdString();
}

// Relative paths count as unset, as the rules say.
std::string absoluteFolder(const char* name) {
    std::string path = environment(name);
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path.starts_with('/') ? path : std::string();
}

std::string home() {
    if (std::string path = absoluteFolder("HOME"); !path.empty()) {
        return path;
    }
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return found->pw_dir;
    }
    return "/";
}

std::string base(const char* variable, const char* belowHome) {
    const std::string named = absoluteFolder(variable);
    return named.empty() ? home() + belowHome : named;
}

} // namespace

std::string configHome() {
    return base("XDG_CONFIG_HOME", "/.config");
}

std::string dataHome() {
    return base("XDG_DATA_HOME", "/.local/share");
}

std::string configFolder() {
    return configHome() + "/rook-bay";
}

std::string dataFolder() {
    return dataHome() + "/rook-bay";
}

std::string cacheFolder() {
    return base("XDG_CACHE_HOME", "/.cache") + "/rook-bay";
}

std::string runtimeFolder() {
    const std::string folder = absoluteFolder("XDG_RUNTIME_DIR");
    struct stat status {};
    // Some ways into another account leave the variable pointing to a folder that isn't there.
    return !folder.empty() && stat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? folder : "";
}

std::error_code makePrivateFolder(const std::string& path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string part = path.substr(0, end);
        if (mkdir(part.c_str(), forTheUserAlone) != 0) {
            const std::error_code error(errno, std::generic_category());
            struct stat status {};
            // On a read-only file system mkdir may complain about that first.
            if (stat(part.c_str(), &status) != 0) {
                return error;
            }
            if (!S_ISDIR(status.st_mode)) {
                return std::make_error_code(std::errc::not_a_directory);
            }
        }
        if (end == std::string::npos) {
            return {};
        }
    }
}

std::string lastErrorText() {
    return std::error_code(errno, std::generic_category()).message();
}

} // namespace rb
