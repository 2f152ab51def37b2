#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"
#include "platform/Dragging.h"
#include "platform/FileOperations.h"
#include "platform/Handle.h"
#include "platform/RunLoop.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

class RBClothesline;

// Folder cards take files: from drags and from cards held over them. A file that goes in leaves its place only when it
// has arrived, and never takes another's name.
class FolderDrops {
public:
    FolderDrops(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line)
        , later_(desktop.runLoop) {}

    // What dropping the drag into the folder would do; none when nothing of it may go there.
    std::uint32_t operationFor(const DraggingInfo& drag, const RBPegItem& folder) const;
    std::uint32_t dragUpdated(const RBPegItemRef& folder, const DraggingInfo& drag);
    void dragExited(const RBPegItemRef& folder);
    bool performDrop(const RBPegItemRef& folder, const DraggingInfo& drag);

    void setDropTarget(RBPegItem& folder, bool on);
    bool canGoInto(const std::string& path, const RBPegItem& folder) const;
    enum class Outcome { Nothing, WentIn, UnderWay };
    // The files one after another. Nothing: not one of them went in. What takes a while tells its end by itself.
    Outcome put(const std::vector<std::string>& paths, const RBPegItemRef& folder, bool move);

private:
    std::vector<std::string> droppable(const DraggingInfo& drag, const RBPegItem& folder) const;
    struct Put;
    void goOn(const std::shared_ptr<Put>& put);
    void putOne(const std::shared_ptr<Put>& put, const std::string& path);
    void placed(Put& put, const std::string& path, const std::optional<FileFailure>& failure);
    void finish(Put& put);
    void absorb(const std::string& path, const RBPegItem& folder);
    void flash(const RBPegItemRef& item, const std::string& text);

    const Desktop& desktop_;
    RBClothesline& line_;
    Lifetime lifetime_;
    DelayedCalls later_;
};

} // namespace rb
