#include "desktops/virtual/Hand.h"

#include "desktops/virtual/DragPasteboard.h"
#include "desktops/virtual/EventMonitors.h"
#include "desktops/virtual/Panels.h"
#include "desktops/virtual/Pointer.h"
#include "desktops/virtual/RunLoop.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

PanelMouseEvent eventIn(const VirtualPanel& panel, Point at, int clickCount, std::uint32_t modifiers) {
    return {.location = {at.x - panel.frame().x, at.y - panel.frame().y},
            .clickCount = clickCount,
            .modifierFlags = modifiers};
}

} // namespace

class VirtualHand::Info final : public DraggingInfo {
public:
    Info(const VirtualPanel& panel, Point at, ForeignDrag drag, bool own)
        : location_{at.x - panel.frame().x, at.y - panel.frame().y}
        , drag_(std::move(drag))
        , own_(own) {}
    Point location() const override { return location_; }
    std::uint32_t sourceOperationMask() const override { return drag_.operations; }
    bool isFromThisProgram() const override { return own_; }
    std::vector<std::string> files() const override { return drag_.files; }

private:
    Point location_;
    ForeignDrag drag_;
    bool own_;
};

bool VirtualHand::carries() const {
    return foreign_ || panels_.outgoingDrag();
}

void VirtualHand::press(Point at, int clickCount, std::uint32_t modifiers) {
    pointer_.moveTo(at);
    pointer_.setPressedButtons(1);
    clickCount_ = clickCount;
    modifiers_ = modifiers;
    pointer_.holdModifiers(modifiers);
    pressed_ = panels_.under(at);
    if (!pressed_) {
        monitors_.happenElsewhere(LeftMouseDownMask);
        return;
    }
    monitors_.happenHere(LeftMouseDownMask);
    if (PanelInput* input = pressed_->input()) {
        input->mouseDown(eventIn(*pressed_, at, clickCount, modifiers));
    }
}

void VirtualHand::pressRight(Point at) {
    pointer_.moveTo(at);
    VirtualPanel* panel = panels_.under(at);
    if (!panel) {
        monitors_.happenElsewhere(RightMouseDownMask);
        return;
    }
    monitors_.happenHere(RightMouseDownMask);
    if (PanelInput* input = panel->input()) {
        input->rightMouseDown(eventIn(*panel, at, 1, NoModifiers));
    }
}

void VirtualHand::pressHarder(int stage) {
    if (pressed_ && pressed_->input()) {
        pressed_->input()->pressureChanged(stage);
    }
}

void VirtualHand::leave() {
    if (VirtualPanel* left = std::exchange(over_, nullptr); left && left->isVisible() && left->input()) {
        left->input()->dragExited();
    }
    offered_ = NoDragOperation;
}

void VirtualHand::dragTo(Point to) {
    pointer_.moveTo(to);
    if (!carries()) {
        if (pressed_ && pressed_->input()) {
            pressed_->input()->mouseDragged(eventIn(*pressed_, to, clickCount_, modifiers_));
        }
        return;
    }
    VirtualPanel* under = panels_.under(to);
    if (under && !under->spec().acceptsFiles) {
        under = nullptr;
    }
    if (under != over_) {
        leave();
    }
    over_ = under;
    if (over_ && over_->input()) {
        const auto& own = panels_.outgoingDrag();
        const ForeignDrag drag =
            own ? ForeignDrag{.files = {own->path}, .operations = own->operationsInside} : *foreign_;
        offered_ = over_->input()->dragUpdated(Info(*over_, to, drag, own.has_value()));
    }
}

void VirtualHand::release() {
    const Point at = pointer_.location();
    if (!carries()) {
        pointer_.setPressedButtons(0);
        if (VirtualPanel* panel = std::exchange(pressed_, nullptr); panel && panel->input()) {
            panel->input()->mouseUp(eventIn(*panel, at, clickCount_, modifiers_));
        }
        pointer_.holdModifiers(NoModifiers);
        return;
    }
    const std::uint32_t offered = std::exchange(offered_, NoDragOperation);
    VirtualPanel* over = std::exchange(over_, nullptr);
    const auto own = panels_.outgoingDrag();
    const ForeignDrag drag = own ? ForeignDrag{.files = {own->path}, .operations = own->operationsInside} : *foreign_;
    taken_ = false;
    if (over && over->input()) {
        if (offered == NoDragOperation) {
            over->input()->dragExited();
        } else {
            taken_ = over->input()->performDrop(Info(*over, at, drag, own.has_value()));
        }
    }
    foreign_.reset();
    pointer_.setPressedButtons(0);
    pointer_.holdModifiers(NoModifiers);
    endOutgoing(taken_ ? offered : NoDragOperation);
}

void VirtualHand::dropElsewhere(std::uint32_t operation) {
    leave();
    pointer_.setPressedButtons(0);
    endOutgoing(operation);
}

void VirtualHand::endOutgoing(std::uint32_t operation) {
    pressed_ = nullptr;
    if (const auto drag = panels_.takeOutgoingDrag(); drag && drag->ended) {
        loop_.post([ended = drag->ended, operation] { ended(operation); });
    }
}

void VirtualHand::beginForeignDrag(Point at, ForeignDrag drag) {
    press(at);
    pasteboard_.begin(drag.types);
    foreign_ = std::move(drag);
}

} // namespace rb
