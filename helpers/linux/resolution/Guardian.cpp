#include "helpers/linux/resolution/Guardian.h"

#include "helpers/linux/resolution/Record.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace rb {

namespace {

// Longer than the helper takes to give up by itself, and shorter than a user waits.
constexpr int longestTrial = 23000; // ms

[[noreturn]] void watch(int pipe, const std::string& record) {
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
    const Restoring result = restoreRecord(record, true);
    ::_exit(result == Restoring::Failed ? 1 : 0);
}

} // namespace

Guardian::Guardian(const std::string& record) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[1]);
        watch(ends[0], record);
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

} // namespace rb
