#pragma once

#include "clothesline/PegItem.h"
#include "platform/PanelInput.h"

#include <memory>

namespace rb {

class RBClothesline;

// What the line's panel hears, handed to the card that is meant. A press stays with its card until the release; a
// drag belongs to the folder card under it, else to the line.
class LineInput final : public PanelInput {
public:
    explicit LineInput(RBClothesline& line)
        : line_(line) {}

    void mouseDown(const PanelMouseEvent& event) override;
    void mouseDragged(const PanelMouseEvent& event) override;
    void mouseUp(const PanelMouseEvent& event) override;
    void rightMouseDown(const PanelMouseEvent& event) override;
    void pressureChanged(int stage) override;
    std::uint32_t dragUpdated(const DraggingInfo& drag) override;
    void dragExited() override;
    bool performDrop(const DraggingInfo& drag) override;

private:
    // The frontmost card whose view contains the point, or null.
    RBPegItemRef cardAt(Point location) const;
    RBPegItemRef folderAt(Point location) const;
    // The card of the press under way, as long as it hangs.
    RBPegItemRef pressed() const;
    void moveDragTo(const RBPegItemRef& folder);

    RBClothesline& line_;
    std::weak_ptr<RBPegItem> pressed_;
    std::weak_ptr<RBPegItem> folder_; // under the drag
    bool overLine_ = false;           // the drag is over the line itself
};

} // namespace rb
