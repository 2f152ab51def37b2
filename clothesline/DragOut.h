#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"
#include "platform/RunLoop.h"

#include <cstdint>

namespace rb {

class RBClothesline;

// Dragging a card off the line as a file. The card leaves only when its file did.
class DragOut {
public:
    DragOut(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line)
        , later_(desktop.runLoop) {}

    // Turns the card's press into a drag; a card whose file is gone leaves instead.
    void begin(const RBPegItemRef& item);
    bool isUnderWay() const { return underWay_; }

private:
    void began(RBPegItem& item);
    void ended(const RBPegItemRef& item, std::uint32_t operation);

    const Desktop& desktop_;
    RBClothesline& line_;
    bool underWay_ = false;
    Lifetime lifetime_;
    DelayedCalls later_;
};

} // namespace rb
