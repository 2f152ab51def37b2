#pragma once

#include "platform/Dragging.h"
#include "platform/Handle.h"

#include <QPoint>
#include <QPointer>

#include <memory>

class QFileSystemWatcher;
class QWidget;

namespace rb {

class RunLoop;
class XConnection;

// Drags a file out of a window of ours. Targets of other programs work asynchronously and say little about it, so a
// move is believed only when the file has left its place, which is watched for a while after the drag.
class DragSource {
public:
    explicit DragSource(RunLoop& loop);
    ~DragSource();
    DragSource(const DragSource&) = delete;
    DragSource& operator=(const DragSource&) = delete;

    // From the next turn of the run loop on; `hotSpot` is the pointer in the picture, which is drawn as large as the
    // drag's frame.
    void begin(QWidget& window, const FileDrag& drag, QPoint hotSpot);
    // What targets of ours may do with the drag under way; nothing without one.
    std::uint32_t ownOperations() const { return drag_ ? drag_->operationsInside : std::uint32_t{NoDragOperation}; }

private:
    void run(const QPointer<QWidget>& window, QPoint hotSpot);
    class Keys;
    void watch(const FileDrag& drag);

    RunLoop& loop_;
    std::unique_ptr<FileDrag> drag_;
    std::unique_ptr<QFileSystemWatcher> watcher_;
    Handle patience_;
    Lifetime lifetime_;
};

} // namespace rb
