#include "desktops/linux/CopyNotes.h"

#include "desktops/linux/Folders.h"
#include "platform/Files.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
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

// Held by the one program that uses the folder, until it ends in whichever way. Empty when another one does.
UniqueFd useFolder(const std::string& path) {
    UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (folder && flock(folder.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return UniqueFd();
    }
    return folder; // without a lock where the file system has none
}

// With what it holds, also in folders that may not be written.
void removeFolder(const std::string& path) {
    std::error_code failed;
    for (fs::recursive_directory_iterator each(path, failed); !failed && each != fs::recursive_directory_iterator();
         each.increment(failed)) {
        std::error_code ignored;
        if (each->symlink_status(ignored).type() == fs::file_type::directory) {
            fs::permissions(each->path(), fs::perms::owner_all, ignored);
        }
    }
    fs::remove_all(path, failed);
}

} // namespace

CopyFolder::CopyFolder(const std::string& folder)
    : path_(appendingPathComponent(folder, std::string(prefix) + "XXXXXX")) {
    if (mkdtemp(path_.data()) == nullptr) {
        path_.clear();
        return;
    }
    inUse_ = useFolder(path_);
    // Copying goes on without a note; only a killed program would then leave something behind.
    if (!makePrivateFolder(notesFolder()) && symlink(path_.c_str(), noteOf(path_).c_str()) != 0 && errno == EEXIST) {
        unlink(noteOf(path_).c_str());
        symlink(path_.c_str(), noteOf(path_).c_str());
    }
}

CopyFolder::~CopyFolder() {
    if (!path_.empty() && (rmdir(path_.c_str()) == 0 || errno == ENOENT)) {
        unlink(noteOf(path_).c_str());
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
            const UniqueFd free = useFolder(path);
            if (!free) {
                continue; // another session's program copies
            }
            removeFolder(path);
        }
        // A disk that isn't there now may come back with the folder.
        if (!isOurFolder(path) && fs::exists(deletingLastPathComponent(path), ignored)) {
            fs::remove(note.path(), ignored);
        }
    }
}

} // namespace rb
