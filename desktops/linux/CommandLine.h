#pragma once

#include <string>
#include <vector>

namespace rb {

// What a start was asked to do: a pure reading of its arguments.
struct CommandLine {
    enum class Action { Run, Help, Version, RestoreScreenshotSettings, Refuse };
    Action action = Action::Run;
    // Without the program's name; for Run.
    std::vector<std::string> arguments = {};
    // What to print and where the process ends with it: standard output and 0 for Help and Version, standard error
    // and 2 for Refuse.
    std::string text = {};
};

// The command that hangs files on the line; the files, by absolute path, follow it among the arguments.
inline constexpr const char* hangCommand = "hang";

// The command for a new text file; the folder, if one is named, follows it.
inline constexpr const char* newTextCommand = "new-text";

// Files and folders may also be named by file URIs, as file managers do. Relative paths count from the working folder.
CommandLine readCommandLine(const std::vector<std::string>& arguments, const std::string& workingFolder);

} // namespace rb
