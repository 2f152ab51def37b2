#pragma once

#include "motion/Geometry.h"
#include "platform/Dragging.h"

#include <cstdint>

namespace rb {

// A mouse event in a panel.
struct PanelMouseEvent {
    Point location = {};             // in the panel's root layer
    int clickCount = 1;              // 2 for the second press of a double click and its release
    std::uint32_t modifierFlags = 0; // or of ModifierFlags
};

// Who hears of the mouse and of drags over a panel. A press belongs to the panel until its release, wherever the
// pointer goes. Main thread only.
class PanelInput {
public:
    virtual ~PanelInput() = default;
    virtual void mouseDown(const PanelMouseEvent& /*event*/) {}
    virtual void mouseDragged(const PanelMouseEvent& /*event*/) {}
    virtual void mouseUp(const PanelMouseEvent& /*event*/) {}
    virtual void rightMouseDown(const PanelMouseEvent& /*event*/) {}
    // On devices that feel it: 1 is a click, 2 a firm one.
    virtual void pressureChanged(int /*stage*/) {}

    // A drag of files entered or moved; gives what a drop here would do.
    virtual std::uint32_t dragUpdated(const DraggingInfo& /*drag*/) { return NoDragOperation; }
    virtual void dragExited() {}
    // Instead of the exit; whether the drop was taken.
    virtual bool performDrop(const DraggingInfo& /*drag*/) { return false; }
};

} // namespace rb
