#pragma once

#include "motion/Geometry.h"
#include "motion/Layer.h"
#include "platform/Dragging.h"
#include "platform/Menu.h"
#include "platform/PanelInput.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace rb {

// Bits of a panel's collection behaviour, in the system's values.
enum CollectionBehavior : std::uint32_t {
    CanJoinAllSpaces = 0x1,
    Stationary = 0x10,
    IgnoresCycle = 0x40,
    FullScreenAuxiliary = 0x100,
};

// Stacking among the system's windows, in the system's values: larger is higher.
inline constexpr int FloatingWindowLevel = 3;
inline constexpr int FlightWindowLevel = 4; // one above the line
inline constexpr int StatusWindowLevel = 25;
inline constexpr int PopUpMenuWindowLevel = 101;

// Shown in all spaces, left alone by window cycling and by the overview of windows, also beside full-screen programs.
inline constexpr std::uint32_t EverywhereBehavior = CanJoinAllSpaces | Stationary | IgnoresCycle | FullScreenAuxiliary;

// A borderless, transparent panel that never takes the focus.
struct PanelSpec {
    Rect frame = {}; // screen coordinates
    int level = 0;
    std::uint32_t collectionBehavior = 0;
    bool hasShadow = false;
    bool ignoresMouseEvents = true;
    bool acceptsFiles = false; // drags of files are told to its input
};

// Main thread only. Destruction takes it off the screen.
class Panel {
public:
    virtual ~Panel() = default;

    virtual Rect frame() const = 0;
    virtual void setFrame(const Rect& frame) = 0;
    // Shows it without activating the program, whichever program is active.
    virtual void orderFrontRegardless() = 0;
    virtual void orderOut() = 0;
    virtual bool isVisible() const = 0;
    // Clicks go through to what lies beneath.
    virtual void setIgnoresMouseEvents(bool ignores) = 0;
    // These parts of the root layer take the mouse, and drags, also while the panel ignores it elsewhere; so nothing
    // is missed between two looks at the pointer. False, and nothing changed, where a panel takes the mouse as a whole.
    virtual bool setMouseAreas(const std::vector<Rect>& areas) = 0;
    // Who hears of the mouse and of drags; null for nobody. Outlives the panel or is taken away before.
    virtual void setInput(PanelInput* input) = 0;
    // Turns the press under way, from inside its mouseDragged, into a drag of a file. The press has no mouseUp then.
    virtual void beginDrag(const FileDrag& drag) = 0;
    // Opens a menu there, in the root layer's coordinates, for the press under way. `closed` is told once it is gone.
    virtual void showContextMenu(const std::shared_ptr<Menu>& menu, Point location, std::function<void()> closed) = 0;
    // The content: its layer fills the panel (bounds at the origin, size of the frame) and may be given a look
    // and sublayers. Coordinates from the panel's bottom left.
    virtual const std::shared_ptr<Layer>& rootLayer() = 0;
    // Pixels per point where it is shown.
    virtual double backingScaleFactor() const = 0;
};

class Panels {
public:
    virtual ~Panels() = default;
    // Created off the screen.
    virtual std::unique_ptr<Panel> createPanel(const PanelSpec& spec) = 0;
};

} // namespace rb
