#pragma once

#include "platform/FileOperations.h"

#include <functional>
#include <optional>
#include <string>

// Names of files on the line and where they go.
namespace rb {

class Files;

// The name in the folder if it is free there, else the first free one of "Name 2.ext", "Name 3.ext" and so on. A link
// that leads nowhere takes its name too.
std::string freePathIn(const Files& files, const std::string& folder, const std::string& name);

// Has `place` put something under a free name of the folder. When that name is taken between the choice and the act,
// the next free one is tried. `done` is told the outcome, before the call returns or later, as `place` is; the files
// must last until then.
void placeUnderFreeName(const Files& files, const std::string& folder, const std::string& name,
                        std::function<void(const std::string& target, FileOperations::Done placed)> place,
                        FileOperations::Done done);

} // namespace rb
