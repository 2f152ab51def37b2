#include "clothesline/LineInput.h"

#include "clothesline/Clothesline.h"

#include <algorithm>
#include <utility>

namespace rb {

RBPegItemRef LineInput::cardAt(Point location) const {
    const auto& items = line_.items();
    // Later cards lie in front.
    const auto found = std::find_if(items.rbegin(), items.rend(),
                                    [&](const RBPegItemRef& item) { return item->peg.frame.contains(location); });
    return found == items.rend() ? nullptr : *found;
}

RBPegItemRef LineInput::folderAt(Point location) const {
    RBPegItemRef card = cardAt(location);
    return card && card->isFolder ? card : nullptr;
}

RBPegItemRef LineInput::pressed() const {
    RBPegItemRef card = pressed_.lock();
    return card && line_.contains(*card) ? card : nullptr;
}

void LineInput::mouseDown(const PanelMouseEvent& event) {
    const RBPegItemRef card = cardAt(event.location);
    pressed_ = card;
    if (card) {
        card->peg.mouseDown(event);
    }
}

void LineInput::mouseDragged(const PanelMouseEvent& event) {
    if (const RBPegItemRef card = pressed()) {
        card->peg.mouseDragged(event);
    }
}

void LineInput::mouseUp(const PanelMouseEvent& event) {
    if (const RBPegItemRef card = pressed()) {
        card->peg.mouseUp(event);
    }
    pressed_.reset();
}

void LineInput::rightMouseDown(const PanelMouseEvent& event) {
    if (const RBPegItemRef card = cardAt(event.location)) {
        card->peg.rightMouseDown(event);
    }
}

void LineInput::pressureChanged(int stage) {
    if (const RBPegItemRef card = pressed()) {
        card->peg.pressureChanged(stage);
    }
}

void LineInput::moveDragTo(const RBPegItemRef& folder) {
    if (const RBPegItemRef previous = folder_.lock(); previous && previous != folder) {
        line_.folderDrops().dragExited(previous);
    }
    if (folder && std::exchange(overLine_, false)) {
        line_.catcher().dropExited();
    }
    folder_ = folder;
}

std::uint32_t LineInput::dragUpdated(const DraggingInfo& drag) {
    const RBPegItemRef folder = folderAt(drag.location());
    moveDragTo(folder);
    if (folder) {
        return line_.folderDrops().dragUpdated(folder, drag);
    }
    overLine_ = true;
    return line_.catcher().dropEntered(drag);
}

void LineInput::dragExited() {
    moveDragTo(nullptr);
    if (std::exchange(overLine_, false)) {
        line_.catcher().dropExited();
    }
}

bool LineInput::performDrop(const DraggingInfo& drag) {
    const RBPegItemRef folder = folderAt(drag.location());
    moveDragTo(folder);
    folder_.reset();
    overLine_ = false;
    return folder ? line_.folderDrops().performDrop(folder, drag) : line_.catcher().performDrop(drag);
}

} // namespace rb
