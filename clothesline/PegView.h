#pragma once

#include "motion/Geometry.h"
#include "platform/Handle.h"
#include "platform/PanelInput.h"

#include <memory>

namespace rb {

class RBClothesline;
struct Desktop;
struct RBPegItem;

// What one card does with the mouse: a click copies, a double click opens, a long or firm press previews, the close
// corner takes down, a move of more than four points drags out or, with Shift, reorders. Belongs to its item, to which
// and to the line it refers back without owning them.
class RBPegView {
public:
    // The area that takes the mouse, in the coordinates of the line's root view.
    Rect frame;

    void attach(const Desktop& desktop, RBClothesline& line, std::weak_ptr<RBPegItem> item);

    void mouseDown(const PanelMouseEvent& event);
    void mouseDragged(const PanelMouseEvent& event);
    void mouseUp(const PanelMouseEvent& event);
    void rightMouseDown(const PanelMouseEvent& event);
    void pressureChanged(int stage);
    // The drag that a press became has ended.
    void dragEnded();

private:
    bool isInCross(Point location) const;
    void endPress();
    void longPress();
    bool mayBecomeDrag() const { return hasDown_ && !startedDrag_ && !didLongPress_; }

    const Desktop* desktop_ = nullptr;
    RBClothesline* line_ = nullptr;
    std::weak_ptr<RBPegItem> item_;
    Point downPoint_;
    bool hasDown_ = false; // a press that may still become a click
    bool startedDrag_ = false;
    bool didLongPress_ = false;
    bool reordering_ = false;
    Handle holdTimer_;
    Handle clickTimer_; // a click that may still become a double one
};

} // namespace rb
