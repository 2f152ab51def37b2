#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"

#include <optional>
#include <vector>

namespace rb {

class RBClothesline;

// Moving a card along the line by hand: the others make room, and a folder card that it is held over takes its file.
class Reorder {
public:
    enum class End { Committed, Cancelled };

    Reorder(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line) {}

    // Points are in the line's root view.
    void begin(const RBPegItemRef& item, Point pointer);
    // False when the pointer has left the line.
    bool move(const RBPegItemRef& item, Point pointer);
    void end(const RBPegItemRef& item, End how);
    bool isUnderWay() const { return underWay_; }
    // The card left the line in the middle of it.
    void itemRemoved(RBPegItem& item);

private:
    void hold(const RBPegItemRef& folder);
    bool holdsFolder(const RBPegItemRef& item, const RBPegItemRef& slot, double x, double anchorX);
    void restoreOrder();

    const Desktop& desktop_;
    RBClothesline& line_;
    bool underWay_ = false;
    std::optional<std::vector<RBPegItemRef>> original_;
    RBPegItemRef folder_; // the folder card that it is held over
    double grab_ = 0;     // from the card's anchor to the pointer
    double lastX_ = 0;
    double direction_ = 0; // of the latest motion along the line; its sign counts
};

} // namespace rb
