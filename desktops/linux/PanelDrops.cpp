#include "desktops/linux/PanelDrops.h"

#include "desktops/linux/UriList.h"

#include <QDropEvent>
#include <QMimeData>

namespace rb {

namespace {

Qt::DropAction actionFor(std::uint32_t operation) {
    if ((operation & MoveOperation) != 0) {
        return Qt::MoveAction;
    }
    return (operation & LinkOperation) != 0 ? Qt::LinkAction : Qt::CopyAction;
}

} // namespace

LinuxDraggingInfo::LinuxDraggingInfo(const QDropEvent& event, Point location, std::uint32_t ownOperations)
    : event_(event)
    , location_(location)
    , ownOperations_(ownOperations) {}

bool LinuxDraggingInfo::isFromThisProgram() const {
    return event_.source() != nullptr;
}

std::uint32_t LinuxDraggingInfo::sourceOperationMask() const {
    if (isFromThisProgram()) {
        return ownOperations_;
    }
    const Qt::DropActions actions = event_.possibleActions();
    if (event_.modifiers().testFlag(Qt::ControlModifier) && actions.testFlag(Qt::CopyAction)) {
        return CopyOperation; // as GTK's sources say themselves
    }
    std::uint32_t mask = NoDragOperation;
    mask |= actions.testFlag(Qt::CopyAction) ? CopyOperation : NoDragOperation;
    mask |= actions.testFlag(Qt::LinkAction) ? LinkOperation : NoDragOperation;
    mask |= actions.testFlag(Qt::MoveAction) ? MoveOperation : NoDragOperation;
    return mask;
}

std::vector<std::string> LinuxDraggingInfo::files() const {
    return localFilesOf(event_.mimeData()->data(QStringLiteral("text/uri-list")).toStdString());
}

void answerDrag(QDropEvent& event, std::uint32_t operation) {
    if (operation == NoDragOperation) {
        event.ignore();
        return;
    }
    event.setDropAction(actionFor(operation));
    event.accept();
}

void answerDrop(QDropEvent& event, std::uint32_t operation) {
    const bool movesTheirs = event.source() == nullptr && (operation & MoveOperation) != 0;
    const bool mayCopy = event.possibleActions().testFlag(Qt::CopyAction);
    answerDrag(event, movesTheirs ? std::uint32_t{mayCopy ? CopyOperation : NoDragOperation} : operation);
}

} // namespace rb
