#pragma once

#include "helpers/capture/Pixels.h"

#include <string>

namespace rb {

// The dragging of a region with the mouse. Plain state, without a display.
class RegionDrag {
public:
    explicit RegionDrag(const PixelRect& bounds)
        : bounds_(bounds) {}

    void press(PixelPoint at);
    // The pixel under the pointer belongs to the region.
    void move(PixelPoint to);
    // While held, the region moves as a whole and stays inside the bounds.
    void hold(bool held);
    void cancel() { dragging_ = false; }

    bool isDragging() const { return dragging_; }
    bool isMoving() const { return dragging_ && held_; }
    // What has been drawn so far; empty while nothing is.
    PixelRect selection() const;
    // Ends the drag. Empty when the mouse has hardly moved: that was a click.
    PixelRect release();

private:
    PixelRect bounds_;
    bool dragging_ = false;
    bool held_ = false;
    PixelPoint anchor_;
    PixelPoint corner_;
    PixelPoint pointer_;
    PixelPoint grip_; // from the selection's top left to the pointer
};

// "1280 × 720"
std::string sizeText(const PixelRect& rect);

// Where a label of that size goes: under the middle of the selection, above it where there is no room, else inside;
// always whole on the screen, `gap` from its edges and from the selection's.
PixelRect labelPlace(const PixelRect& selection, int width, int height, const PixelRect& screen, int gap);

} // namespace rb
