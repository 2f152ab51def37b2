#include "desktops/linux/CopyNotes.h"

#include "desktops/linux/Folders.h"
#include "platform/Files.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr const char* prefix = ".rookbay-";

std::string notesFolder() {
    return dataFolder() + "/copies";
}

// A note is a link named as the folder and leading to it, which exists whole or not at all.
std::string noteOf(const std::string& path) {
    return appendingPathComponent(notesFolder(), lastPathComponent(path));
}

bool isOurFolder(const std::string& path) {
    struct stat facts {};
    return lstat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode) && facts.st_uid == geteuid();
}

} // namespace

std::string makeCopyFolder(const std::string& folder) {
    std::string path = appendingPathComponent(folder, std::string(prefix) + "XXXXXX");
    if (mkdtemp(path.data()) == nullptr) {
        return "";
    }
    // Copying goes on without a note; only a killed program would then leave something behind.
    if (!makePrivateFolder(notesFolder()) && symlink(path.c_str(), noteOf(path).c_str()) != 0 && errno == EEXIST) {
        unlink(noteOf(path).c_str());
        symlink(path.c_str(), noteOf(path).c_str());
    }
    return path;
}

void removeCopyFolder(const std::string& path) {
    if (rmdir(path.c_str()) == 0 || errno == ENOENT) {
        unlink(noteOf(path).c_str());
    }
}

bool hasForgottenCopies() {
    std::error_code failed;
    return !fs::is_empty(notesFolder(), failed) && !failed;
}

void removeForgottenCopies() {
    std::error_code failed;
    for (const auto& note : fs::directory_iterator(notesFolder(), failed)) {
        std::error_code ignored;
        const std::string path = fs::read_symlink(note.path(), ignored).string();
        const std::string name = note.path().filename().string();
        if (path.empty() || !name.starts_with(prefix) || lastPathComponent(path) != name) {
            continue;
        }
        if (isOurFolder(path)) {
            fs::remove_all(path, ignored);
        }
        // A disk that isn't there now may come back with the folder.
        if (!isOurFolder(path) && fs::exists(deletingLastPathComponent(path), ignored)) {
            fs::remove(note.path(), ignored);
        }
    }
}

} // namespace rb
