#pragma once

#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace rb {

using Environment = std::map<std::string, std::string>;

// A program that a test started, with its own log; it ends with this object, and with the test's process however that
// ends.
class Program {
public:
    // Looks the first word up on this process's PATH. Standard input is empty, both outputs go to the log file. Throws
    // std::system_error when no process can be made; a program that isn't there exits with 127.
    Program(const std::vector<std::string>& command, const Environment& environment, std::string logFile);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() { end(); }

    pid_t pid() const { return pid_; }
    bool isRunning() { return !exitCode(); }
    // What it ended with, 128 + N after signal N; nothing while it runs.
    std::optional<int> exitCode();
    // The same after waiting at most that many seconds.
    std::optional<int> waitForExit(double limit = 5);
    void signal(int number) const;
    // What it wrote so far.
    std::string output() const;
    // Asks it to end, then insists.
    void end();

private:
    pid_t pid_ = -1;
    std::optional<int> exitCode_;
    std::string logFile_;
};

// The whole file, or nothing when it can't be read.
std::optional<std::string> readFile(const std::string& path);
// Throws std::runtime_error when it can't.
void writeFile(const std::string& path, const std::string& text);

} // namespace rb
