#pragma once

#include "platform/Desktop.h"
#include "platform/Dragging.h"
#include "platform/PanelInput.h"
#include "platform/Panels.h"
#include "platform/Screens.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace rb {

class RBClothesline;

// Files dragged from any program to the top of the screen hang on the line. While such a drag is under way a tinted
// strip lies over the menu bar of the pointer's screen and takes the drop.
class DropCatcher final : private PanelInput {
public:
    DropCatcher(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line) {}
    ~DropCatcher() override;
    DropCatcher(const DropCatcher&) = delete;
    DropCatcher& operator=(const DropCatcher&) = delete;

    // A press anywhere: a drag that comes after it is a new one.
    void mouseWentDown();
    // One look at the pointer; `screen` is the one under it or null.
    void tick(Point pointer, const Screen* screen);
    bool isShowing() const { return catcher_ && catcher_->isVisible(); }
    // The line is open as a drop target.
    bool dragActive() const { return dragActive_; }

    // What a drop of the drag would do; opens the line for one with files.
    std::uint32_t dropEntered(const DraggingInfo& drag);
    void dropExited() { setDropHighlight(false); }
    bool performDrop(const DraggingInfo& drag) override;

private:
    std::uint32_t dragUpdated(const DraggingInfo& drag) override { return dropEntered(drag); }
    void dragExited() override { dropExited(); }

    bool fileDragUnderway();
    void dragEnded();
    void showCatcherOn(const Screen& screen);
    void hideCatcher();
    void beginDropOn(const std::optional<Screen>& screen);
    void setDropZone(bool on);
    void setDropHighlight(bool on);

    const Desktop& desktop_;
    RBClothesline& line_;
    std::unique_ptr<Panel> catcher_; // from its first use
    std::int64_t dragBaseline_ = 0;  // the drag pasteboard's change count at the last press
    bool dragChecked_ = false;
    bool dragHasFiles_ = false;
    bool dragActive_ = false;
    std::optional<double> dragSince_; // since when the pointer has been at the top edge
    bool dropHighlighted_ = false;
};

} // namespace rb
