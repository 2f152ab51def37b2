#include "clothesline/Reorder.h"

#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "clothesline/LineGeometry.h"
#include "platform/Keyboard.h"
#include "platform/Pointer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace rb {

namespace {

constexpr double lowestPointer = 16;
constexpr double sideways = 30; // beyond the line's ends
constexpr double endMargin = 60;
constexpr double clickMargin = 2;
// A folder is held near its anchor, and within its slot until the card has passed.
constexpr double holdAlways = 40;
constexpr double holdAtMost = 80;

} // namespace

void Reorder::begin(const RBPegItemRef& item, Point pointer) {
    if (!line_.contains(*item)) {
        return;
    }
    original_ = line_.items();
    underWay_ = true;
    item->moving = true;
    const double x = item->swing->model().position.x;
    item->swing->removeAnimation("rb.move");
    grab_ = pointer.x - x;
    lastX_ = x;
    direction_ = 0;
    setItemHovered(*item, false);
    RBAnimateLayerValue(item->cross, KeyPath::Opacity, 0.0, 0.1);
    line_.nudge(*item, 4);
}

bool Reorder::move(const RBPegItemRef& item, Point pointer) {
    const double width = line_.width();
    if (!item->moving || pointer.y < lowestPointer || pointer.x < -sideways || pointer.x > width + sideways) {
        return false;
    }
    const double x = std::max(endMargin, std::min(width - endMargin, pointer.x - grab_));
    if (x != lastX_) {
        direction_ = x - lastX_;
        lastX_ = x;
    }
    const Point place{x, LineGeometry::anchorHeight(x, width)};
    item->swing->change().position = place;
    item->peg.frame = LineGeometry::cardRect(item->cardSize, place).inset(-clickMargin, -clickMargin);

    const auto& items = line_.items();
    const auto distance = [&](std::size_t index) {
        return std::abs(LineGeometry::anchor(index, items.size(), width).x - x);
    };
    std::size_t slot = 0;
    for (std::size_t index = 1; index < items.size(); ++index) {
        if (distance(index) < distance(slot)) {
            slot = index;
        }
    }
    const RBPegItemRef inSlot = items[slot];
    if (holdsFolder(item, inSlot, x, LineGeometry::anchor(slot, items.size(), width).x)) {
        hold(inSlot);
        return true;
    }
    hold(nullptr);
    const auto index = static_cast<std::size_t>(std::find(items.begin(), items.end(), item) - items.begin());
    if (slot != index) {
        auto order = items;
        order.erase(order.begin() + static_cast<std::ptrdiff_t>(index));
        order.insert(order.begin() + static_cast<std::ptrdiff_t>(slot), item);
        line_.setOrder(std::move(order));
        line_.layout({.animated = true});
        line_.nudge(*inSlot, 2.5);
    }
    return true;
}

bool Reorder::holdsFolder(const RBPegItemRef& item, const RBPegItemRef& slot, double x, double anchorX) {
    if (slot == item || !line_.folderDrops().canGoInto(item->path, *slot)) {
        return false;
    }
    const double away = std::abs(x - anchorX);
    const bool passed = direction_ > 0 ? x > anchorX : x < anchorX;
    return (!passed || away < holdAlways) && away < holdAtMost;
}

void Reorder::hold(const RBPegItemRef& folder) {
    if (folder == folder_) {
        return;
    }
    if (const RBPegItemRef previous = std::exchange(folder_, folder)) {
        line_.folderDrops().setDropTarget(*previous, false);
    }
    if (folder) {
        line_.folderDrops().setDropTarget(*folder, true);
    }
}

void Reorder::end(const RBPegItemRef& item, End how) {
    if (!item->moving) {
        return;
    }
    item->moving = false;
    underWay_ = false;
    const RBPegItemRef folder = folder_;
    hold(nullptr);
    if (how == End::Cancelled) {
        restoreOrder();
    }
    original_.reset();
    if (how == End::Committed && folder && line_.contains(*folder)) {
        const bool moves = (desktop_.pointer.modifierFlags() & OptionModifier) == 0;
        const FolderDrops::Outcome outcome = line_.folderDrops().put({item->path}, folder, moves);
        // It left the line, or waits in its place until its file has arrived.
        if (moves && outcome != FolderDrops::Outcome::Nothing) {
            line_.layout({.animated = true});
            line_.save();
            return;
        }
    }
    line_.layout({.animated = true});
    line_.nudge(*item, 3);
    line_.save();
}

void Reorder::restoreOrder() {
    if (!original_) {
        return;
    }
    std::vector<RBPegItemRef> order = *original_;
    std::erase_if(order, [this](const RBPegItemRef& saved) { return !line_.contains(*saved); });
    for (const RBPegItemRef& item : line_.items()) {
        if (std::find(order.begin(), order.end(), item) == order.end()) {
            order.push_back(item);
        }
    }
    line_.setOrder(std::move(order));
}

void Reorder::itemRemoved(RBPegItem& item) {
    if (item.moving) {
        item.moving = false;
        underWay_ = false;
        original_.reset();
        hold(nullptr);
    } else if (folder_.get() == &item) {
        folder_.reset();
    }
}

} // namespace rb
