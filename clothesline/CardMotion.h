#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"
#include "platform/RunLoop.h"

#include <cstdint>

namespace rb {

class RBClothesline;

// How cards move: to their places, in on arrival, by a nudge, in the breeze. All motions add up on the card's swing
// layer and never change its resting tilt.
class CardMotion {
public:
    struct LayoutOptions {
        bool animated = false;
    };

    CardMotion(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line)
        , gusts_(desktop.runLoop) {}

    // Puts every card at its anchor, but the one under the user's hand.
    void layout(LayoutOptions options);
    // The entrance of a newly hung card.
    void arrive(RBPegItem& item);
    // Pushes the card by an angle and lets it swing back. Nothing for a card that doesn't hang.
    void nudge(RBPegItem& item, double degrees);
    // Now and then a gust sets all cards swinging.
    void scheduleBreeze();
    void stopBreeze() { breezeTimer_.reset(); }

private:
    void gust();

    const Desktop& desktop_;
    RBClothesline& line_;
    DelayedCalls gusts_;
    Handle breezeTimer_;
    std::uint64_t nudgeCounter_ = 0;
};

} // namespace rb
