#pragma once

#include "motion/Geometry.h"
#include "motion/Image.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace rb {

// What a drag may do at its target, in the system's bit values; combined by or.
enum DragOperation : std::uint32_t {
    NoDragOperation = 0,
    CopyOperation = 1,
    LinkOperation = 2,
    GenericOperation = 4,
    MoveOperation = 16,
    DeleteOperation = 32,
};

// A drag over one of this program's panels. Valid only during the call that hands it over.
class DraggingInfo {
public:
    virtual ~DraggingInfo() = default;
    // In the panel's root layer, points.
    virtual Point location() const = 0;
    // Everything that its source allows; or of DragOperation.
    virtual std::uint32_t sourceOperationMask() const = 0;
    // It began in a panel of this program.
    virtual bool isFromThisProgram() const = 0;
    // The local files that it carries, as absolute paths in their order. Anything else is left out, and what can't be
    // read counts as none.
    virtual std::vector<std::string> files() const = 0;
};

// A file to be dragged out of a panel.
struct FileDrag {
    std::string path;                                  // absolute
    Rect frame = {};                                   // of the picture, in the panel's root layer
    Image picture = {};                                // follows the pointer
    std::uint32_t operationsInside = NoDragOperation;  // what targets in this program may do with it
    std::uint32_t operationsOutside = NoDragOperation; // and those of other programs
    // Told once, in a later turn: what the target did, or nothing (then the picture flies back where the system can).
    std::function<void(std::uint32_t operation)> ended = {};
    // Told at most once, after the end: the file has left its place since. Only some systems' targets need it.
    std::function<void()> fileLeft = {};
};

// The system's pasteboard of drags, whichever program drags. Main thread only.
class DragPasteboard {
public:
    virtual ~DragPasteboard() = default;
    // Grows whenever a drag begins anywhere.
    virtual std::int64_t changeCount() const = 0;
    // The types of the present drag under the names below and others; empty when they are not known.
    virtual std::vector<std::string> types() const = 0;
    // The latest drag is known to have ended although the button may still be down: it was cancelled, or its program
    // died. Always false where the system doesn't tell.
    virtual bool isOver() const = 0;
};

inline constexpr const char* FileURLDragType = "public.file-url";
inline constexpr const char* FilenamesDragType = "NSFilenamesPboardType";
inline constexpr const char* URLDragType = "public.url";

} // namespace rb
