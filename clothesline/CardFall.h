#pragma once

#include "clothesline/PegItem.h"
#include "motion/Geometry.h"
#include "platform/Desktop.h"
#include "platform/Screens.h"

#include <list>
#include <memory>
#include <optional>

namespace rb {

class Panel;

// Cards that fall off the line. What falls is a picture of the card in an overlay of its own, so the card itself can
// go at once.
class CardFall {
public:
    explicit CardFall(const Desktop& desktop)
        : desktop_(desktop) {}
    ~CardFall();
    CardFall(const CardFall&) = delete;
    CardFall& operator=(const CardFall&) = delete;

    // `place`: where the swing layer's anchor is on the screen.
    void fall(RBPegItem& item, Point place, const std::optional<Screen>& screen, double scale);
    std::size_t overlays() const { return overlays_.size(); }

private:
    std::unique_ptr<Panel> overlayOn(const std::optional<Screen>& screen);

    const Desktop& desktop_;
    std::list<std::unique_ptr<Panel>> overlays_;
};

} // namespace rb
