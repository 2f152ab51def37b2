#pragma once

#include "platform/Desktop.h"
#include "platform/EventMonitors.h"
#include "platform/Handle.h"
#include "platform/Screens.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace rb {

class RBClothesline;

// Watches the pointer 30 times a second and decides when the line drops, which card is hovered, and when the line goes
// away again. While nothing that it looks at can change, the poll rests until the user's next input, on systems that
// tell of it. Times are those of the run loop's monotonic clock.
class LineTick {
public:
    LineTick(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line) {}

    void start();
    void stop();
    void tick();
    // The poll looks at its own copy of the screens, so that it allocates nothing.
    void screensChanged();
    void mouseWentDown();
    // The line was revealed: there is something to watch.
    void wake();

    // Opened from the menu: stays until the pointer has been inside once and left.
    bool pinned = false;
    // The line stays down at least until this time.
    std::optional<double> peekUntil;

private:
    void poll();
    void restWhenNothingCanChange(Point pointer, bool inBand);
    void tickRevealed(Point pointer);
    void tickHidden(const Screen* screen, bool inBand);
    // The screen whose frame contains the pointer, or null.
    const Screen* screenAt(Point pointer) const;
    bool inMenuBarBand(Point pointer, const Screen* screen) const;

    const Desktop& desktop_;
    RBClothesline& line_;
    // A click in the menu bar keeps the line from reopening until the pointer has left the bar.
    bool suppressed_ = false;
    std::vector<Screen> screens_;
    std::optional<double> hotSince_;
    std::optional<double> awaySince_;
    Point lastPointer_;
    double stillSince_ = 0;
    Handle tickTimer_;
    Handle nextInput_; // while the poll rests
    Handle globalMonitor_;
    Handle localMonitor_;
};

} // namespace rb
