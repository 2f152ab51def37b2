#pragma once

#include "motion/Geometry.h"

#include <optional>
#include <string>

namespace rb {

// A capture that is to become a file.
struct CaptureFile {
    std::string bytes = {}; // of the picture file
    // Where it was taken: points from the top left of the primary screen, y growing downwards.
    std::optional<Rect> taken = std::nullopt;
};

struct SavedCapture {
    std::string path = {};  // where it is now; empty when it couldn't be saved
    std::string error = {}; // why not, for the user
};

// Saves the file in the folder under `name`.`extension`, or under the next number where that is taken: whatever is
// there stays. The file gets its name when it is complete, on the disk and marked as a capture; when that fails,
// nothing is left behind. Where the file system keeps no attributes the marks are left out.
SavedCapture saveCapture(const std::string& folder, const std::string& name, const std::string& extension,
                         const CaptureFile& file);

} // namespace rb
