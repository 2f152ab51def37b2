#pragma once

#include <string>
#include <system_error>

namespace rb {

// The user's folders for all programs, after the XDG base directory rules, as below.
std::string configHome();
std::string dataHome();

// The program's own folders after the XDG base directory rules: absolute paths without a slash at the end. They may
// not exist yet.
std::string configFolder(); // $XDG_CONFIG_HOME/rook-bay
std::string dataFolder();   // $XDG_DATA_HOME/rook-bay
std::string cacheFolder();  // $XDG_CACHE_HOME/rook-bay
// $XDG_RUNTIME_DIR, or empty where the session has no such folder.
std::string runtimeFolder();

// Makes the folder and what is missing above it, for the user alone. An existing folder is left as it is.
std::error_code makePrivateFolder(const std::string& path);

// The last system call's error in words.
std::string lastErrorText();

} // namespace rb
