#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rb {

// One file that makes a file manager offer the action, ours from its first to its last byte.
struct QuickActionFile {
    std::string program; // the file manager's, as found in the search path
    std::string path;    // absolute
    std::string text;
    unsigned mode = 0644;
};

// For every file manager that reads files of actions (all but Thunar). `command` starts this program.
std::vector<QuickActionFile> quickActionFiles(const std::string& command);

// What the file says of itself: "0.1.0 /usr/bin/rookbay", the program's version and how it is called; nothing for
// a file that isn't ours.
std::optional<std::string> quickActionVersion(std::string_view text);
std::string quickActionVersionOf(const std::string& command);

// A program's path as a word of a shell command, and as one of a desktop entry's Exec line.
std::string shellWord(const std::string& word);
std::string execWord(const std::string& word);

} // namespace rb
