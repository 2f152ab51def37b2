#pragma once

#include "motion/Geometry.h"
#include "platform/Dragging.h"

class QDropEvent;

namespace rb {

// A drag over one of our windows as the product sees it. Programs here offer copying, moving and linking; a drop that
// only links or copies asks nothing of its source.
class LinuxDraggingInfo final : public DraggingInfo {
public:
    // `location` in the panel's root layer; `ownOperations` of the drag that is under way from a panel of ours.
    LinuxDraggingInfo(const QDropEvent& event, Point location, std::uint32_t ownOperations);

    Point location() const override { return location_; }
    std::uint32_t sourceOperationMask() const override;
    bool isFromThisProgram() const override;
    std::vector<std::string> files() const override;

private:
    const QDropEvent& event_;
    Point location_;
    std::uint32_t ownOperations_;
};

// Tells the source what a drop does, or would do; with nothing the drag isn't taken here.
void answerDrag(QDropEvent& event, std::uint32_t operation);
// The same once it is done, or under way. Another program never hears of a move, which we do ourselves: it might
// remove files that are still to be moved.
void answerDrop(QDropEvent& event, std::uint32_t operation);

} // namespace rb
