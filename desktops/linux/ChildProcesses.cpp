#include "desktops/linux/ChildProcesses.h"

#include "desktops/linux/UniqueFd.h"
#include "platform/RunLoop.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace rb {

namespace {

namespace fs = std::filesystem;

// Which descriptor becomes which in the child; everything else is closed there.
struct ChildDescriptors {
    int input = -1; // -1: the null device
    int output = -1;
};

pid_t spawn(const ChildStart& start, const ChildDescriptors& descriptors) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    if (descriptors.input >= 0) {
        posix_spawn_file_actions_adddup2(&actions, descriptors.input, STDIN_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    posix_spawn_file_actions_adddup2(&actions, descriptors.output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    for (const int signal : {SIGPIPE, SIGINT, SIGHUP, SIGTERM, SIGCHLD}) {
        sigaddset(&signals, signal);
    }
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::vector<char*> arguments{const_cast<char*>(start.program.c_str())}; // posix_spawn doesn't write to them
    for (const std::string& argument : start.arguments) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t child = -1;
    const int error = posix_spawn(&child, start.program.c_str(), &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? child : -1;
}

} // namespace

class LinuxChild final : public ChildProcess {
public:
    LinuxChild(RunLoop& runLoop, ChildStart start, pid_t child, UniqueFd input, UniqueFd output, UniqueFd process)
        : runLoop_(runLoop)
        , start_(std::move(start))
        , child_(child)
        , input_(std::move(input))
        , output_(std::move(output))
        , process_(std::move(process)) {
        if (output_) {
            outputNotifier_ = std::make_unique<QSocketNotifier>(output_.get(), QSocketNotifier::Read);
            QObject::connect(outputNotifier_.get(), &QSocketNotifier::activated, [this] { read(); });
        }
        processNotifier_ = std::make_unique<QSocketNotifier>(process_.get(), QSocketNotifier::Read);
        QObject::connect(processNotifier_.get(), &QSocketNotifier::activated, [this] { finish(); });
    }
    ~LinuxChild() override {
        if (running_) {
            abandon();
        }
    }
    LinuxChild(const LinuxChild&) = delete;
    LinuxChild& operator=(const LinuxChild&) = delete;

    bool isRunning() const override { return running_; }
    void write(std::string_view text) override {
        while (input_ && !text.empty()) {
            // A socket pair, so that a reader that is gone raises no signal.
            const ssize_t written = ::send(input_.get(), text.data(), text.size(), MSG_NOSIGNAL);
            if (written < 0 && errno == EINTR) {
                continue;
            }
            if (written <= 0) {
                return;
            }
            text.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    void closeInput() override { input_ = UniqueFd(); }
    void kill() override {
        if (running_) {
            ::kill(child_, SIGKILL); // not yet waited for, so the number is still its own
        }
    }

private:
    // False at the end of the output, and when nothing more is there now.
    bool readPiece() {
        std::array<char, 16384> buffer{};
        const ssize_t length = ::read(output_.get(), buffer.data(), buffer.size());
        if (length < 0 && errno == EINTR) {
            return true;
        }
        if (length > 0) {
            if (start_.output) {
                start_.output({buffer.data(), static_cast<std::size_t>(length)});
            }
            return true;
        }
        if (length == 0 || errno != EAGAIN) {
            outputNotifier_->setEnabled(false);
        }
        return false;
    }
    void read() { readPiece(); }
    void finish() {
        int status = 0;
        const pid_t waited = ::waitpid(child_, &status, WNOHANG);
        if (waited == 0 || (waited < 0 && errno == EINTR)) {
            return;
        }
        running_ = false;
        processNotifier_->setEnabled(false);
        // What it wrote before its end is in the pipe by now. Somebody else may still hold the pipe: only what is there
        // counts.
        const std::weak_ptr<int> alive = alive_;
        while (!alive.expired() && output_ && outputNotifier_->isEnabled() && readPiece()) {}
        if (alive.expired()) {
            return;
        }
        if (outputNotifier_) {
            outputNotifier_->setEnabled(false);
        }
        // Notifiers don't like to be destroyed in the middle of their own signal.
        runLoop_.post([alive, this] {
            if (!alive.expired() && start_.ended) {
                const auto ended = start_.ended;
                ended();
            }
        });
    }
    // Nobody is interested any more; somebody must still wait for it.
    void abandon();

    RunLoop& runLoop_;
    ChildStart start_;
    pid_t child_;
    UniqueFd input_;
    UniqueFd output_;
    UniqueFd process_;
    bool running_ = true;
    std::unique_ptr<QSocketNotifier> outputNotifier_;
    std::unique_ptr<QSocketNotifier> processNotifier_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

namespace {

// Waits in the event loop for a child that nobody holds any more.
class Orphan final : public QObject {
public:
    Orphan(pid_t child, UniqueFd process)
        : child_(child)
        , process_(std::move(process))
        , notifier_(process_.get(), QSocketNotifier::Read) {
        connect(&notifier_, &QSocketNotifier::activated, this, [this] {
            notifier_.setEnabled(false);
            ::waitpid(child_, nullptr, WNOHANG);
            deleteLater();
        });
    }

private:
    pid_t child_;
    UniqueFd process_;
    QSocketNotifier notifier_;
};

} // namespace

void LinuxChild::abandon() {
    if (QCoreApplication* application = QCoreApplication::instance()) {
        auto* orphan = new Orphan(child_, std::move(process_)); // goes with the child, or with the application
        orphan->setParent(application);
    }
}

std::optional<std::string> LinuxChildProcesses::resourcePath(const std::string& name) const {
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    for (const fs::path& candidate : {folder / "helpers" / name, folder / name, folder / "../lib/rookbay" / name}) {
        if (!error && ::access(candidate.c_str(), X_OK) == 0 && fs::is_regular_file(candidate, error)) {
            return fs::weakly_canonical(candidate, error).string();
        }
        error.clear();
    }
    return std::nullopt;
}

std::unique_ptr<ChildProcess> LinuxChildProcesses::start(ChildStart start) {
    std::array<int, 2> inputPair{-1, -1};
    std::array<int, 2> outputPair{-1, -1};
    if (start.pipesInput && ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, inputPair.data()) != 0) {
        return nullptr;
    }
    UniqueFd ourInput(inputPair[0]);
    const UniqueFd itsInput(inputPair[1]);
    UniqueFd ourOutput;
    UniqueFd itsOutput;
    if (!start.outputFile.empty()) {
        itsOutput = UniqueFd(::open(start.outputFile.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
    } else if (::pipe2(outputPair.data(), O_CLOEXEC) == 0) {
        ourOutput = UniqueFd(outputPair[0]);
        itsOutput = UniqueFd(outputPair[1]);
        ::fcntl(ourOutput.get(), F_SETFL, O_NONBLOCK);
    }
    if (!itsOutput) {
        return nullptr;
    }
    const pid_t child = spawn(start, {.input = itsInput.get(), .output = itsOutput.get()});
    if (child < 0) {
        return nullptr;
    }
    UniqueFd process(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    if (!process) {
        // It can't be followed.
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        return nullptr;
    }
    return std::make_unique<LinuxChild>(runLoop_, std::move(start), child, std::move(ourInput), std::move(ourOutput),
                                        std::move(process));
}

std::optional<std::string> LinuxChildProcesses::createTemporaryFile(const std::string& name) {
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error);
    if (error) {
        return std::nullopt;
    }
    std::string path = folder / name;
    const UniqueFd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    return file ? std::optional(std::move(path)) : std::nullopt;
}

std::optional<std::string> LinuxChildProcesses::takeTemporaryFile(const std::string& path, std::size_t limit) {
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    std::optional<std::string> contents;
    struct stat facts {};
    if (file && ::fstat(file.get(), &facts) == 0 && static_cast<std::size_t>(facts.st_size) <= limit) {
        contents.emplace(static_cast<std::size_t>(facts.st_size), '\0');
        std::size_t filled = 0;
        while (filled < contents->size()) {
            const ssize_t length = ::read(file.get(), contents->data() + filled, contents->size() - filled);
            if (length < 0 && errno == EINTR) {
                continue;
            }
            if (length <= 0) {
                break;
            }
            filled += static_cast<std::size_t>(length);
        }
        contents->resize(filled);
    }
    ::unlink(path.c_str());
    return contents;
}

} // namespace rb
