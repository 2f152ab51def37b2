#pragma once

#include "platform/Dragging.h"

namespace rb {

// The pasteboard named for drags, which every program's drags go through.
class MacDragPasteboard final : public DragPasteboard {
public:
    std::int64_t changeCount() const override;
    std::vector<std::string> types() const override;
    // Nobody is told; the button's release ends it.
    bool isOver() const override { return false; }
};

} // namespace rb
