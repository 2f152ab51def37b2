#pragma once

#include "platform/Handle.h"

#include <QString>

#include <cstdint>
#include <functional>

namespace rb {

class RunLoop;

struct FolderSize {
    std::int64_t items = 0; // directly in the folder
    std::int64_t bytes = 0; // of all files below it, links not followed
    bool complete = true;   // else it was too much to count
};

// Counts in the background and answers on the main thread; dropping the handle ends it.
Handle measureFolder(RunLoop& loop, const QString& path, std::function<void(const FolderSize&)> answer);

} // namespace rb
