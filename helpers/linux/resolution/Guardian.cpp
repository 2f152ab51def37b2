#include "helpers/linux/resolution/Guardian.h"

#include "helpers/linux/resolution/ModeChange.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

// Longer than the helper takes to give up by itself, and shorter than a user waits.
constexpr int longestTrial = 23000; // ms
constexpr std::size_t longestRecord = 65536;

bool writeAll(int file, const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t length = ::write(file, text.data() + written, text.size() - written);
        if (length < 0 && errno == EINTR) {
            continue;
        }
        if (length <= 0) {
            return false;
        }
        written += static_cast<std::size_t>(length);
    }
    return true;
}

} // namespace

std::string recordFolder() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR"); // NOLINT(concurrency-mt-unsafe): single-threaded
    return folder && *folder == '/' ? folder : "/tmp";
}

bool restoreRecord(const std::string& record) {
    const int file = ::open(record.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0) {
        return errno == ENOENT;
    }
    struct stat facts {};
    std::string text(longestRecord, '\0');
    // Nobody else's file decides about our screens.
    const bool ours = ::fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_uid == ::getuid();
    const ssize_t length = ours ? ::read(file, text.data(), text.size()) : -1;
    ::close(file);
    text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    const auto arrangement = readArrangement(text);
    bool good = false;
    if (arrangement) {
        int number = 0;
        xcb_connection_t* connection = xcb_connect(nullptr, &number);
        if (xcb_connection_has_error(connection) == 0) {
            auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
            for (; number > 0 && screens.rem > 1; --number) {
                xcb_screen_next(&screens);
            }
            good = applyArrangement(connection, screens.data->root, *arrangement);
        }
        xcb_disconnect(connection);
    }
    if (ours) {
        ::unlink(record.c_str());
    }
    return good;
}

Guardian::Guardian(std::string record)
    : record_(std::move(record)) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[1]);
        watch(ends[0]);
    }
    ::close(ends[0]);
    if (child < 0) {
        ::close(ends[1]);
        return;
    }
    pipe_ = ends[1];
}

Guardian::~Guardian() {
    if (pipe_ >= 0) {
        const char done = 'd';
        while (::write(pipe_, &done, 1) < 0 && errno == EINTR) {}
        ::close(pipe_);
    }
}

void Guardian::watch(int pipe) const {
    const pid_t helper = ::getppid();
    // Out of the terminal's and the session's way; nobody waits for the end of its output.
    ::setsid();
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGPIPE}) {
        ::signal(signal, SIG_IGN);
    }
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(null, standard);
    }
    pollfd waiting{.fd = pipe, .events = POLLIN, .revents = 0};
    int ready = 0;
    do {
        ready = ::poll(&waiting, 1, longestTrial);
    } while (ready < 0 && errno == EINTR);
    char done = 0;
    if (ready > 0 && ::read(pipe, &done, 1) == 1) {
        ::_exit(0);
    }
    if (ready == 0 && ::getppid() == helper) {
        ::kill(helper, SIGKILL); // it hangs
    }
    ::_exit(restoreRecord(record_) ? 0 : 1);
}

bool Guardian::writeRecord(const std::string& text) const {
    const int file = ::open(record_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) {
        return false;
    }
    const bool good = writeAll(file, text) && ::fsync(file) == 0;
    ::close(file);
    return good;
}

void Guardian::removeRecord() const {
    ::unlink(record_.c_str());
}

} // namespace rb
