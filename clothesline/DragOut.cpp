#include "clothesline/DragOut.h"

#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "platform/Dragging.h"
#include "platform/Files.h"

namespace rb {

namespace {

// The system may finish a move after the drag has ended.
constexpr double lateMove = 0.6;
// The view reaches beyond the card.
constexpr double viewMargin = 2;

} // namespace

void DragOut::begin(const RBPegItemRef& item) {
    if (item->inTransit) {
        return;
    }
    if (!desktop_.files.facts(item->path).exists) {
        line_.prune();
        return;
    }
    const Rect card = item->peg.frame.inset(viewMargin, viewMargin);
    line_.beginDrag({.path = item->path,
                     .frame = item->photo->model().frame().offset(card.x, card.y),
                     .picture = item->thumb,
                     .operationsInside = MoveOperation,
                     .operationsOutside = CopyOperation | MoveOperation | DeleteOperation,
                     .ended = lifetime_.guard([this, weak = std::weak_ptr<RBPegItem>(item)](std::uint32_t operation) {
                         ended(weak.lock(), operation);
                     }),
                     .fileLeft = lifetime_.guard([this] { line_.prune(); })});
    began(*item);
}

void DragOut::began(RBPegItem& item) {
    underWay_ = true;
    item.dragging = true;
    applyCardOpacity(item);
    RBAnimateLayerValue(item.cross, KeyPath::Opacity, 0.0, 0.1);
}

void DragOut::ended(const RBPegItemRef& item, std::uint32_t operation) {
    underWay_ = false;
    if (item) {
        item->peg.dragEnded();
        item->dragging = false;
        applyCardOpacity(*item);
    }
    if ((operation & DeleteOperation) != 0) {
        if (item) {
            line_.actions().trashItem(item);
        }
        return;
    }
    line_.prune();
    if ((operation & MoveOperation) != 0) {
        later_.after(lateMove, [this] { line_.prune(); });
    }
}

} // namespace rb
