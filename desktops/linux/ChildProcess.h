#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// Words of a command line as a shell splits them: blanks separate, single and double quotes and backslashes protect.
// Nothing is expanded. Nothing for a quote without end.
std::optional<std::vector<std::string>> splitCommand(const std::string& command);

struct ChildExit {
    bool exited = false; // else ended by a signal
    int code = 0;        // exit code or signal
    // "exit code 1" or "signal 11".
    std::string text() const;
    bool isSuccess() const { return exited && code == 0; }
};

// Starts a program on its own: in a session of its own, with nothing to read and nobody reading its output,
// with none of our descriptors and signal settings. It outlives us; its end is noticed without a thread or a timer,
// and it never stays behind as a zombie. `words` are the program (looked up on PATH unless it has a slash) and its
// arguments. Returns 0 or the error number of the start. `ended` is called once, on the main thread, unless the
// application ends first. Main thread only.
int startProgram(const std::vector<std::string>& words, std::function<void(ChildExit)> ended);

} // namespace rb
