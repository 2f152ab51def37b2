#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rb {

// A program that was started and what still ties it to us. Destruction closes its pipes and calls nobody any more; the
// program itself goes on. Main thread only.
class ChildProcess {
public:
    virtual ~ChildProcess() = default;
    virtual bool isRunning() const = 0;
    // Writes to its standard input. A reader that is gone is no error and raises no signal.
    virtual void write(std::string_view text) = 0;
    // End of its standard input.
    virtual void closeInput() = 0;
    // SIGKILL.
    virtual void kill() = 0;
};

struct ChildStart {
    std::string program = {}; // absolute path
    std::vector<std::string> arguments = {};
    // Else it has nothing to read.
    bool pipesInput = false;
    // An existing file that takes its standard output; empty: output() gets it.
    std::string outputFile = {};
    // Its standard output as it comes, in pieces of any size.
    std::function<void(std::string_view)> output = {};
    // It has exited and all its output was told. Once; may drop the process.
    std::function<void()> ended = {};
};

// Starts programs of the bundle and talks with them. Standard error goes to the null device. Main thread only.
class ChildProcesses {
public:
    virtual ~ChildProcesses() = default;
    // The executable of that name among the program's resources, or nothing.
    virtual std::optional<std::string> resourcePath(const std::string& name) const = 0;
    // Null when it can't be started. Callbacks come in later turns of the run loop.
    virtual std::unique_ptr<ChildProcess> start(ChildStart start) = 0;

    // Creates an empty file for the user alone in the temporary directory, never one that exists or a link; its path,
    // or nothing.
    virtual std::optional<std::string> createTemporaryFile(const std::string& name) = 0;
    // What it holds (at most `limit` bytes; nothing when it holds more or can't be read). The file is deleted.
    virtual std::optional<std::string> takeTemporaryFile(const std::string& path, std::size_t limit) = 0;
};

} // namespace rb
