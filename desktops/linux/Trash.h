#pragma once

#include "platform/FileOperations.h"

#include <functional>
#include <string>

namespace rb {

// Puts a file into the Trash that file managers share, so that they can put it back: the home's Trash for files on its
// file system, else the one at the top of the file's own, else the home's after all. `move` takes it there and never
// replaces anything. Nothing is left behind after a failure.
//
// Our own, because Qt 6.4 moves a file whose Trash can't be told into the current folder.
std::optional<FileFailure>
putIntoTrash(const std::string& path,
             const std::function<std::optional<FileFailure>(const std::string& from, const std::string& to)>& move);

} // namespace rb
