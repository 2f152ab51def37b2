#pragma once

#include "platform/Dragging.h"
#include "platform/Keyboard.h"

#include <optional>
#include <string>
#include <vector>

namespace rb {

class VirtualDragPasteboard;
class VirtualEventMonitors;
class VirtualPanel;
class VirtualPanels;
class VirtualPointer;
class VirtualRunLoop;

// The user's hand on the mouse: clicks and drags over panels, this program's and others'. Points are in screen
// coordinates; what takes the mouse is the frontmost panel there that doesn't ignore it.
class VirtualHand {
public:
    VirtualHand(VirtualRunLoop& loop, VirtualPointer& pointer, VirtualPanels& panels, VirtualEventMonitors& monitors,
                VirtualDragPasteboard& pasteboard)
        : loop_(loop)
        , pointer_(pointer)
        , panels_(panels)
        , monitors_(monitors)
        , pasteboard_(pasteboard) {}

    void press(Point at, int clickCount = 1, std::uint32_t modifiers = NoModifiers);
    void pressRight(Point at);
    // With the button held; carries a file drag along when one is under way.
    void dragTo(Point to);
    // Lets go: over a panel that takes the drag it is dropped there, anywhere else it ends without one.
    void release();
    void click(Point at, int clickCount = 1) {
        press(at, clickCount);
        release();
    }
    void pressHarder(int stage);

    // Another program begins a drag, after a press there.
    struct ForeignDrag {
        std::vector<std::string> files = {};
        std::vector<std::string> types = {FileURLDragType};
        std::uint32_t operations = CopyOperation | LinkOperation | GenericOperation | MoveOperation;
    };
    void beginForeignDrag(Point at, ForeignDrag drag);
    // Lets go of a card over another program, which does that with the file.
    void dropElsewhere(std::uint32_t operation);
    // What a drop here would do, as the panel under the pointer said last.
    std::uint32_t offeredOperation() const { return offered_; }
    // Whether the last drop over a panel was taken.
    bool dropTaken() const { return taken_; }

private:
    class Info;
    bool carries() const;
    void leave();
    void endOutgoing(std::uint32_t operation);

    VirtualRunLoop& loop_;
    VirtualPointer& pointer_;
    VirtualPanels& panels_;
    VirtualEventMonitors& monitors_;
    VirtualDragPasteboard& pasteboard_;
    VirtualPanel* pressed_ = nullptr; // the panel to which the press belongs
    int clickCount_ = 1;
    std::uint32_t modifiers_ = NoModifiers;
    std::optional<ForeignDrag> foreign_;
    VirtualPanel* over_ = nullptr; // the panel that the drag is over
    std::uint32_t offered_ = NoDragOperation;
    bool taken_ = false;
};

} // namespace rb
