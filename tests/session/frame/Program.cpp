#include "tests/session/frame/Program.h"

#include "tests/session/frame/Wait.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    result.reserve(words.size() + 1);
    for (std::string& word : words) {
        result.push_back(word.data());
    }
    result.push_back(nullptr);
    return result;
}

} // namespace

Program::Program(const std::vector<std::string>& command, const Environment& environment, std::string logFile)
    : logFile_(std::move(logFile)) {
    // Everything is made ready before the fork: afterwards the child only calls what is safe there.
    std::vector<std::string> words = command;
    std::vector<std::string> settings;
    for (const auto& [name, value] : environment) {
        settings.push_back(name + "=" + value);
    }
    const auto arguments = pointers(words);
    const auto variables = pointers(settings);
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ < 0) {
        throw std::system_error(errno, std::generic_category(), "starting " + command.front());
    }
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) {
            ::_exit(127);
        }
        const int input = ::open("/dev/null", O_RDONLY);
        const int output = ::open(logFile_.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        ::dup2(input, STDIN_FILENO);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(output, STDERR_FILENO);
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::execvpe(arguments.front(), arguments.data(), variables.data());
        ::_exit(127);
    }
}

std::optional<int> Program::exitCode() {
    int status = 0;
    if (!exitCode_ && ::waitpid(pid_, &status, WNOHANG) == pid_) {
        exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return exitCode_;
}

std::optional<int> Program::waitForExit(double limit) {
    return waitUntil([this] { return exitCode().has_value(); }, limit) ? exitCode_ : std::nullopt;
}

void Program::signal(int number) const {
    if (!exitCode_) {
        ::kill(pid_, number);
    }
}

std::string Program::output() const {
    return readFile(logFile_).value_or("");
}

void Program::end() {
    if (exitCode()) {
        return;
    }
    signal(SIGTERM);
    if (!waitForExit(2)) {
        signal(SIGKILL);
        (void)waitForExit(5);
    }
}

std::optional<std::string> readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file.write(text.data(), static_cast<std::streamsize>(text.size())).flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

} // namespace rb
