#include "clothesline/LineTick.h"

#include "app/DefaultsKeys.h"
#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "platform/Pointer.h"
#include "platform/RunLoop.h"
#include "platform/StatusBar.h"

#include <algorithm>
#include <vector>

namespace rb {

namespace {

constexpr double tickInterval = 1.0 / 30;
constexpr double tickTolerance = 0.005;
// How long the pointer is still before the poll rests, and how often it looks nevertheless: what moves the pointer
// without a hand on the mouse isn't input.
constexpr double restDelay = 0.5;
constexpr double restingInterval = 1.25;
constexpr double restingTolerance = 0.25;
constexpr double hoverTime = 0.25;
constexpr double awayTime = 0.5;
constexpr double hitMargin = 4;
constexpr unsigned leftButton = 1;

// Whether a state that began at `since` has lasted; notes its beginning on the first call.
bool lasted(std::optional<double>& since, double now, double seconds) {
    if (!since) {
        since = now;
        return false;
    }
    return now - *since >= seconds;
}

} // namespace

void LineTick::start() {
    screensChanged();
    line_.catcher().mouseWentDown(); // a drag of before is none of ours
    constexpr std::uint64_t anyMouseDown = LeftMouseDownMask | RightMouseDownMask;
    globalMonitor_ = desktop_.eventMonitors.addGlobalMonitor(anyMouseDown, [this] { mouseWentDown(); });
    localMonitor_ = desktop_.eventMonitors.addLocalMonitor(anyMouseDown, [this] { mouseWentDown(); });
    poll();
}

void LineTick::stop() {
    tickTimer_.reset();
    nextInput_.reset();
    globalMonitor_.reset();
    localMonitor_.reset();
}

void LineTick::poll() {
    nextInput_.reset();
    stillSince_ = desktop_.runLoop.now();
    tickTimer_ = desktop_.runLoop.every(tickInterval, tickTolerance, [this] { tick(); });
}

void LineTick::wake() {
    if (nextInput_) {
        poll();
    }
}

void LineTick::screensChanged() {
    screens_ = desktop_.screens.all();
    wake();
}

const Screen* LineTick::screenAt(Point pointer) const {
    const auto found = std::find_if(screens_.begin(), screens_.end(),
                                    [&](const Screen& screen) { return screen.frame.containsPointer(pointer); });
    return found == screens_.end() ? nullptr : &*found;
}

bool LineTick::inMenuBarBand(Point pointer, const Screen* screen) const {
    return screen != nullptr && RBMenuBarBand(*screen, desktop_.statusBar.thickness()).containsPointer(pointer);
}

void LineTick::mouseWentDown() {
    line_.catcher().mouseWentDown();
    const Point pointer = desktop_.pointer.location();
    if (!inMenuBarBand(pointer, screenAt(pointer))) {
        return;
    }
    suppressed_ = true;
    hotSince_.reset();
    if (line_.revealed() && !line_.dragActive()) {
        pinned = false;
        line_.setRevealed(false);
    }
}

void LineTick::tick() {
    const Point pointer = desktop_.pointer.location();
    const Screen* screen = screenAt(pointer);
    const bool inBand = inMenuBarBand(pointer, screen);
    if (!inBand) {
        suppressed_ = false;
    }
    line_.catcher().tick(pointer, screen);
    if (line_.revealed()) {
        tickRevealed(pointer);
    } else {
        tickHidden(screen, inBand);
    }
    restWhenNothingCanChange(pointer, inBand);
}

// Away from the menu bar, or in it after a click, a hidden line waits for the pointer or a button alone.
void LineTick::restWhenNothingCanChange(Point pointer, bool inBand) {
    const double now = desktop_.runLoop.now();
    const bool moved = pointer != lastPointer_;
    const bool pending =
        line_.revealed() || line_.dragActive() || line_.catcher().isShowing() || hotSince_ || (inBand && !suppressed_);
    lastPointer_ = pointer;
    if (moved || pending) {
        stillSince_ = now;
        wake();
        return;
    }
    if (nextInput_ || now - stillSince_ < restDelay) {
        return;
    }
    stillSince_ = now;
    nextInput_ = desktop_.eventMonitors.onNextInput([this] {
        poll();
        tick();
    });
    // A second look, now that nothing can be missed any more.
    if (nextInput_ && desktop_.pointer.location() == pointer && desktop_.pointer.pressedButtons() == 0) {
        tickTimer_ = desktop_.runLoop.every(restingInterval, restingTolerance, [this] { tick(); });
    } else {
        nextInput_.reset();
    }
}

void LineTick::tickRevealed(Point pointer) {
    if (line_.dragActive()) {
        line_.setIgnoresMouseEvents(false);
        awaySince_.reset();
        return;
    }
    const Rect frame = line_.panelFrame();
    const Point inPanel{pointer.x - frame.x, pointer.y - frame.y};
    const auto& items = line_.items();
    std::vector<Rect> areas;
    areas.reserve(items.size());
    for (const RBPegItemRef& item : items) {
        areas.push_back(item->peg.frame.inset(-hitMargin, -hitMargin));
    }
    const auto area =
        std::find_if(areas.begin(), areas.end(), [&](const Rect& candidate) { return candidate.contains(inPanel); });
    const auto hit = items.begin() + (area - areas.begin());
    const bool anyPressed =
        std::any_of(items.begin(), items.end(), [](const RBPegItemRef& item) { return item->pressed; });
    const bool inHand = line_.draggingOut() || anyPressed;
    if (line_.setMouseAreas(areas)) {
        // With a card in the hand all of it is the line: nothing is dropped on what lies beneath by mistake.
        line_.setIgnoresMouseEvents(!inHand);
    } else if (!inHand) {
        line_.setIgnoresMouseEvents(hit == items.end());
    }
    for (const RBPegItemRef& item : items) {
        setItemHovered(*item, hit != items.end() && item == *hit && !line_.draggingOut());
    }

    // The menu bar above the line counts as inside.
    Rect inside = frame;
    if (const auto screen = line_.panelScreen()) {
        inside.height = screen->frame.maxY() - frame.y;
    }
    const bool isInside = inside.containsPointer(pointer);
    if (isInside) {
        pinned = false;
    }
    const double now = desktop_.runLoop.now();
    const bool held = (peekUntil && now < *peekUntil) || line_.quickLookVisible();
    const bool mayLeave = !pinned && !line_.draggingOut() && !line_.menuShowing() && !anyPressed;
    if (mayLeave && !isInside && !held) {
        if (lasted(awaySince_, now, awayTime)) {
            awaySince_.reset();
            line_.setRevealed(false);
        }
        return;
    }
    awaySince_.reset();
}

void LineTick::tickHidden(const Screen* screen, bool inBand) {
    const auto leftDown = [this] { return (desktop_.pointer.pressedButtons() & leftButton) != 0; };
    if (!inBand || suppressed_ || leftDown() || !line_.setting(DefaultsKey::ClotheslineHoverReveal) ||
        desktop_.screens.showsFullScreenSpace(screen->id)) {
        hotSince_.reset();
        return;
    }
    if (!lasted(hotSince_, desktop_.runLoop.now(), hoverTime)) {
        return;
    }
    hotSince_.reset();
    const auto shown = line_.panelScreen();
    if (!shown || shown->id != screen->id) {
        line_.placeOnScreen(*screen);
    }
    line_.updateHint();
    line_.setRevealed(true);
}

} // namespace rb
