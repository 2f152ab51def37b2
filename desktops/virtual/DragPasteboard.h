#pragma once

#include "platform/Dragging.h"

#include <utility>

namespace rb {

// The drag pasteboard as the test's drags change it.
class VirtualDragPasteboard final : public DragPasteboard {
public:
    std::int64_t changeCount() const override { return changeCount_; }
    std::vector<std::string> types() const override {
        ++examinations_;
        return types_;
    }

    bool isOver() const override { return over_; }

    // The drag ends before the button is released.
    void end() { over_ = true; }
    // A drag begins somewhere.
    void begin(std::vector<std::string> types) {
        types_ = std::move(types);
        over_ = false;
        ++changeCount_;
    }
    // How often somebody looked at the types.
    int examinations() const { return examinations_; }

private:
    std::int64_t changeCount_ = 17;
    std::vector<std::string> types_;
    bool over_ = false;
    mutable int examinations_ = 0;
};

} // namespace rb
