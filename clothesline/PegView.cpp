#include "clothesline/PegView.h"

#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "platform/Keyboard.h"
#include "platform/Pointer.h"

#include <cmath>
#include <utility>

namespace rb {

namespace {

constexpr double crossSide = 28;
constexpr double longPressTime = 0.45;
constexpr double dragDistance = 4;
constexpr int firmClick = 2; // of the pressure's stages

} // namespace

void RBPegView::attach(const Desktop& desktop, RBClothesline& line, std::weak_ptr<RBPegItem> item) {
    desktop_ = &desktop;
    line_ = &line;
    item_ = std::move(item);
}

bool RBPegView::isInCross(Point location) const {
    return location.x - frame.x <= crossSide && location.y - frame.y >= frame.height - crossSide;
}

void RBPegView::endPress() {
    holdTimer_.reset();
    if (const auto item = item_.lock(); item && item->pressed) {
        setItemPressed(*item, false);
    }
}

void RBPegView::mouseDown(const PanelMouseEvent& event) {
    const auto item = item_.lock();
    if (!item) {
        return;
    }
    if (event.clickCount >= 2) {
        clickTimer_.reset();
    }
    if (isInCross(event.location)) {
        hasDown_ = false;
        line_->takeDown(item);
        return;
    }
    if (event.clickCount == 2) {
        hasDown_ = false;
        line_->actions().openItem(*item);
        return;
    }
    downPoint_ = event.location;
    hasDown_ = true;
    startedDrag_ = false;
    didLongPress_ = false;
    setItemPressed(*item, true);
    holdTimer_ = desktop_->runLoop.after(longPressTime, [this] {
        if (hasDown_ && !startedDrag_) {
            longPress();
        }
    });
}

void RBPegView::longPress() {
    didLongPress_ = true;
    endPress();
    if (const auto item = item_.lock()) {
        line_->quickLookItem(item);
    }
}

void RBPegView::pressureChanged(int stage) {
    if (stage == firmClick && mayBecomeDrag()) {
        longPress();
    }
}

void RBPegView::mouseDragged(const PanelMouseEvent& event) {
    const auto item = item_.lock();
    if (!item) {
        return;
    }
    if (reordering_) {
        if (!line_->reorder().move(item, event.location)) {
            reordering_ = false;
            line_->reorder().end(item, Reorder::End::Cancelled);
            line_->dragOut().begin(item);
        }
        return;
    }
    if (!mayBecomeDrag() ||
        std::hypot(event.location.x - downPoint_.x, event.location.y - downPoint_.y) <= dragDistance) {
        return;
    }
    startedDrag_ = true;
    endPress();
    if ((event.modifierFlags & ShiftModifier) != 0) {
        reordering_ = true;
        line_->reorder().begin(item, event.location);
    } else {
        line_->dragOut().begin(item);
    }
}

void RBPegView::mouseUp(const PanelMouseEvent& event) {
    const auto item = item_.lock();
    endPress();
    if (reordering_) {
        reordering_ = false;
        startedDrag_ = false;
        hasDown_ = false;
        if (item) {
            line_->reorder().end(item, Reorder::End::Committed);
        }
        return;
    }
    if (mayBecomeDrag() && event.clickCount == 1) {
        clickTimer_ = desktop_->runLoop.after(desktop_->pointer.doubleClickInterval(), [this] {
            clickTimer_.reset();
            if (const auto clicked = item_.lock()) {
                line_->actions().copyItem(clicked);
            }
        });
    }
    hasDown_ = false;
    didLongPress_ = false;
}

void RBPegView::rightMouseDown(const PanelMouseEvent& event) {
    endPress();
    hasDown_ = false;
    if (const auto item = item_.lock()) {
        line_->cardMenu().show(item, event.location);
    }
}

void RBPegView::dragEnded() {
    startedDrag_ = false;
    hasDown_ = false;
}

} // namespace rb
