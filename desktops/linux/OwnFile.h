#pragma once

#include <optional>
#include <string>

namespace rb {

// Small files of ours among other programs' files. Failures are words for the log; nothing is success. Links are
// never followed and files that aren't the user's own are left alone.

// The content of a regular file of the user's; nothing when it isn't there, isn't one, or is larger than a megabyte.
std::optional<std::string> readOwnFile(const std::string& path);
// Whether anything, even a dangling link, has the path.
bool isPathTaken(const std::string& path);
// Makes the file, whole or not at all, and the folders above it; something in its place is an error.
std::optional<std::string> writeNewFile(const std::string& path, const std::string& text, unsigned mode);
// Puts another content in the place of the one that was read as `before`; an error when that isn't there any more.
std::optional<std::string> replaceOwnFile(const std::string& path, const std::string& before, const std::string& text);

} // namespace rb
