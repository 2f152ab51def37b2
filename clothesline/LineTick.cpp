#include "clothesline/LineTick.h"

#include "app/DefaultsKeys.h"
#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "platform/Pointer.h"
#include "platform/RunLoop.h"
#include "platform/StatusBar.h"

#include <algorithm>

namespace rb {

namespace {

constexpr double tickInterval = 1.0 / 30;
constexpr double tickTolerance = 0.005;
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
    constexpr std::uint64_t anyMouseDown = LeftMouseDownMask | RightMouseDownMask;
    tickTimer_ = desktop_.runLoop.every(tickInterval, tickTolerance, [this] { tick(); });
    globalMonitor_ = desktop_.eventMonitors.addGlobalMonitor(anyMouseDown, [this] { mouseWentDown(); });
    localMonitor_ = desktop_.eventMonitors.addLocalMonitor(anyMouseDown, [this] { mouseWentDown(); });
}

void LineTick::stop() {
    tickTimer_.reset();
    globalMonitor_.reset();
    localMonitor_.reset();
}

void LineTick::screensChanged() {
    screens_ = desktop_.screens.all();
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
    if (line_.revealed()) {
        tickRevealed(pointer);
    } else {
        tickHidden(screen, inBand);
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
    const auto hit = std::find_if(items.begin(), items.end(), [&](const RBPegItemRef& item) {
        return item->peg.frame.inset(-hitMargin, -hitMargin).contains(inPanel);
    });
    const bool anyPressed =
        std::any_of(items.begin(), items.end(), [](const RBPegItemRef& item) { return item->pressed; });
    if (!line_.draggingOut() && !anyPressed) {
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
    const bool leftDown = (desktop_.pointer.pressedButtons() & leftButton) != 0;
    if (!inBand || suppressed_ || leftDown || !line_.setting(DefaultsKey::ClotheslineHoverReveal) ||
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
