#include "helpers/linux/resolution/Record.h"

#include "helpers/linux/resolution/ModeChange.h"
#include "helpers/linux/resolution/Server.h"
#include "helpers/shared/WriteAll.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

constexpr std::size_t longestRecord = 65536;
constexpr const char* prefix = "resolution-";

std::string absolute(const char* variable) {
    const char* value = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): single-threaded
    return value && *value == '/' ? value : "";
}

// A real folder of ours that nobody else may look into.
bool isPrivateFolder(const std::string& path) {
    if (::mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        return false;
    }
    const int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        return false;
    }
    struct stat facts {};
    const bool ours = ::fstat(folder, &facts) == 0 && facts.st_uid == ::geteuid() &&
                      ((facts.st_mode & (S_IRWXG | S_IRWXO)) == 0 || ::fchmod(folder, S_IRWXU) == 0);
    ::close(folder);
    return ours;
}

// RandR's numbers mean nothing to another server, nor after a restart of the machine.
std::string thisServer() {
    std::string boot;
    std::ifstream("/proc/sys/kernel/random/boot_id") >> boot;
    const char* display = std::getenv("DISPLAY"); // NOLINT(concurrency-mt-unsafe): single-threaded
    return boot + " " + (display ? display : "");
}

// The arrangement of a record; nothing when it is damaged or of another server.
std::optional<Arrangement> arrangementIn(const std::string& text) {
    const Json json = Json::parse(text, nullptr, false);
    const auto server = json.is_object() ? json.find("server") : json.end();
    const auto arrangement = json.is_object() ? json.find("arrangement") : json.end();
    if (!json.is_object() || server == json.end() || *server != thisServer() || arrangement == json.end()) {
        return std::nullopt;
    }
    return readArrangement(arrangement->dump());
}

class OpenFile {
public:
    explicit OpenFile(const std::string& path)
        : file_(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC)) {}
    ~OpenFile() {
        if (file_ >= 0) {
            ::close(file_);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool isOpen() const { return file_ >= 0; }
    // Nobody else's file decides about our screens.
    bool isOurs() const {
        struct stat facts {};
        return ::fstat(file_, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_uid == ::geteuid();
    }
    bool isDeleted() const {
        struct stat facts {};
        return ::fstat(file_, &facts) == 0 && facts.st_nlink == 0;
    }
    bool lock(bool waits) const {
        int result = 0;
        do {
            result = ::flock(file_, waits ? LOCK_EX : LOCK_EX | LOCK_NB);
        } while (result != 0 && errno == EINTR);
        return result == 0;
    }
    std::string text() const {
        std::string text(longestRecord, '\0');
        const ssize_t length = ::read(file_, text.data(), text.size());
        text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
        return text;
    }

private:
    int file_;
};

std::vector<std::string> recordsIn(const std::string& folder) {
    std::vector<std::string> paths;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().filename().string().starts_with(prefix)) {
            paths.push_back(entry->path());
        }
    }
    return paths;
}

} // namespace

std::optional<std::string> recordFolder() {
    std::vector<std::string> bases{absolute("XDG_RUNTIME_DIR"), absolute("XDG_STATE_HOME")};
    if (const std::string home = absolute("HOME"); bases[1].empty() && !home.empty()) {
        bases[1] = home + "/.local/state";
    }
    for (const std::string& base : bases) {
        std::error_code error;
        if (base.empty() || (&base == &bases[0] && !fs::is_directory(base, error))) {
            continue; // a runtime folder isn't ours to make
        }
        fs::create_directories(base, error);
        if (std::string folder = base + "/rook-bay"; isPrivateFolder(folder)) {
            return folder;
        }
    }
    return std::nullopt;
}

std::string newRecordPath(const std::string& folder) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return folder + "/" + prefix + std::to_string(::getpid()) + "-" + std::to_string(now) + ".json";
}

std::optional<Record> Record::create(const std::string& path, const std::string& text) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        return std::nullopt;
    }
    Record record(path, file);
    if (::flock(file, LOCK_EX | LOCK_NB) != 0 || !writeAll(file, text) || ::fsync(file) != 0) {
        record.remove();
        return std::nullopt;
    }
    return record;
}

Record::Record(std::string path, int file)
    : path_(std::move(path))
    , file_(file) {}

Record::Record(Record&& other) noexcept
    : path_(std::move(other.path_))
    , file_(std::exchange(other.file_, -1)) {}

Record::~Record() {
    if (file_ >= 0) {
        ::close(file_);
    }
}

void Record::remove() const {
    ::unlink(path_.c_str());
}

std::string recordText(const std::string& arrangement) {
    return Json{{"server", thisServer()}, {"arrangement", Json::parse(arrangement, nullptr, false)}}.dump();
}

Restoring restoreRecord(const std::string& path, bool waits) {
    const OpenFile file(path);
    if (!file.isOpen()) {
        return errno == ENOENT ? Restoring::Nothing : Restoring::Failed;
    }
    if (!file.isOurs()) {
        return Restoring::Failed;
    }
    if (!file.lock(waits)) {
        return Restoring::Running;
    }
    if (file.isDeleted()) {
        return Restoring::Nothing; // whoever was in charge has dealt with it
    }
    const auto arrangement = arrangementIn(file.text());
    if (!arrangement) {
        // Modes change only after their record is whole on the disk, so there is nothing to take back.
        ::unlink(path.c_str());
        return Restoring::Nothing;
    }
    const Server server;
    if (!server.isThere() || !server.apply(*arrangement)) {
        return Restoring::Failed;
    }
    ::unlink(path.c_str());
    return Restoring::Done;
}

RestoringAll restoreRecords(const std::string& folder) {
    RestoringAll all;
    for (const std::string& path : recordsIn(folder)) {
        const Restoring result = restoreRecord(path, false);
        all.done += result == Restoring::Done ? 1 : 0;
        all.failed += result == Restoring::Failed ? 1 : 0;
        all.running += result == Restoring::Running ? 1 : 0;
    }
    return all;
}

void forgetOldRecords(const std::string& folder) {
    for (const std::string& path : recordsIn(folder)) {
        const OpenFile file(path);
        if (file.isOpen() && file.isOurs() && file.lock(false) && arrangementIn(file.text())) {
            ::unlink(path.c_str());
        }
    }
}

} // namespace rb
