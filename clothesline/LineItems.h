#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"
#include "platform/Handle.h"
#include "platform/RunLoop.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace rb {

class RBClothesline;

// The list of hanging files: how they come and go, how many fit, and how the list survives a restart. Every change is
// saved at once. Files are never touched, but screenshots of the program's own folder go to the Trash with their card.
class LineItems {
public:
    struct HangOptions {
        bool quietly = false;
        bool flying = false;
        bool animated = false;
    };
    struct RemoveOptions {
        bool quietly = false;
        bool fall = false;
    };

    LineItems(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line)
        , later_(desktop.runLoop) {}

    const std::vector<RBPegItemRef>& all() const { return items_; }
    RBPegItemRef itemForPath(const std::string& path) const;
    // The new item, or null when nothing new was hung: no such file, or it hangs already (its card then nudges).
    RBPegItemRef hang(const std::string& path, HangOptions options);
    void remove(const RBPegItemRef& item, RemoveOptions options);
    void takeDown(const RBPegItemRef& item);
    // One after another in the given order, with a single sound.
    void takeDownAll(const std::vector<RBPegItemRef>& items);
    // The line's own dropping of what no longer fits.
    void letGo(const RBPegItemRef& item);
    // Drops what is gone from the disk.
    void prune();
    void restore();

    bool contains(const RBPegItem& item) const;
    // The same items in another order; not saved yet.
    void setOrder(std::vector<RBPegItemRef> order) { items_ = std::move(order); }
    void save() const;
    // Retracts the line shortly after its last item went.
    void lineBecameEmpty();

private:
    void loadThumb(const RBPegItemRef& item);

    const Desktop& desktop_;
    RBClothesline& line_;
    std::vector<RBPegItemRef> items_;
    // Document thumbnails on their way, by item.
    std::map<const RBPegItem*, Handle> thumbnailRequests_;
    DelayedCalls later_;
};

} // namespace rb
