#include "desktops/linux/ChildProcess.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

// Our own mark for Qt's D-Bus library (see SingleInstance), which is no business of other programs.
constexpr std::string_view noSessionBus = "DBUS_SESSION_BUS_ADDRESS=disabled:";

// What a program that we start takes from us.
class SpawnSettings {
public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        for (const int signal : {SIGPIPE, SIGINT, SIGHUP, SIGTERM, SIGCHLD}) {
            sigaddset(&signals, signal);
        }
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

// Waits for one child in the event loop and goes with it.
class ChildWatch final : public QSocketNotifier {
public:
    ChildWatch(pid_t child, int descriptor, std::function<void(ChildExit)> ended)
        : QSocketNotifier(descriptor, QSocketNotifier::Read, QCoreApplication::instance())
        , child_(child)
        , descriptor_(descriptor)
        , ended_(std::move(ended)) {
        connect(this, &QSocketNotifier::activated, this, [this] { finish(); });
    }
    ~ChildWatch() override { close(descriptor_); }
    ChildWatch(const ChildWatch&) = delete;
    ChildWatch& operator=(const ChildWatch&) = delete;

private:
    void finish() {
        setEnabled(false);
        deleteLater();
        int status = 0;
        ChildExit result;
        if (waitpid(child_, &status, WNOHANG) == child_) {
            result.exited = WIFEXITED(status);
            result.code = result.exited ? WEXITSTATUS(status) : WTERMSIG(status);
        }
        ended_(result);
    }

    pid_t child_;
    int descriptor_;
    std::function<void(ChildExit)> ended_;
};

} // namespace

std::optional<std::vector<std::string>> splitCommand(const std::string& command) {
    std::vector<std::string> words;
    std::optional<std::string> word; // an empty pair of quotes is a word too
    char quote = '\0';
    for (std::size_t index = 0; index < command.size(); ++index) {
        const char c = command[index];
        if (c == '\\' && quote != '\'' && index + 1 < command.size()) {
            // Between double quotes a backslash protects only these.
            const char next = command[index + 1];
            if (quote == '"' && std::string_view("\"\\$`").find(next) == std::string_view::npos) {
                word = word.value_or("") + c;
            } else {
                word = word.value_or("") + next;
                ++index;
            }
        } else if (quote != '\0') {
            if (c == quote) {
                quote = '\0';
            } else {
                *word += c;
            }
        } else if (c == '\'' || c == '"') {
            quote = c;
            word = word.value_or("");
        } else if (c == ' ' || c == '\t' || c == '\n') {
            if (word) {
                words.push_back(std::move(*word));
                word.reset();
            }
        } else {
            word = word.value_or("") + c;
        }
    }
    if (quote != '\0') {
        return std::nullopt;
    }
    if (word) {
        words.push_back(std::move(*word));
    }
    return words;
}

std::string ChildExit::text() const {
    return (exited ? "exit code " : "signal ") + std::to_string(code);
}

int startProgram(const std::vector<std::string>& words, std::function<void(ChildExit)> ended) {
    if (words.empty()) {
        return ENOENT;
    }
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str())); // posix_spawn doesn't write to them
    }
    arguments.push_back(nullptr);
    std::vector<char*> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (std::string_view(*entry) != noSessionBus) {
            environment.push_back(*entry);
        }
    }
    environment.push_back(nullptr);
    const SpawnSettings settings;
    pid_t child = 0;
    const int error = posix_spawnp(&child, arguments.front(), settings.actions(), settings.attributes(),
                                   arguments.data(), environment.data());
    if (error != 0) {
        return error;
    }
    const auto descriptor = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    if (descriptor >= 0) {
        new ChildWatch(child, descriptor, std::move(ended)); // goes with the child or the application
    }
    return 0;
}

} // namespace rb
