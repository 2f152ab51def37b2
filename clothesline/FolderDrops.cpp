#include "clothesline/FolderDrops.h"

#include "clothesline/CardLayers.h"
#include "clothesline/Clothesline.h"
#include "clothesline/FileNames.h"
#include "platform/Appearance.h"
#include "platform/FileOperations.h"
#include "platform/Files.h"
#include "platform/Keyboard.h"
#include "platform/Log.h"
#include "platform/Pointer.h"
#include "platform/Sounds.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr double lookDuration = 0.16;
constexpr double flashSize = 11;
constexpr double flashTime = 1.3;
constexpr double flashFade = 0.25;
constexpr double flashGone = 0.3; // after the fade began

// Neither the folder itself, nor one that holds it, nor what lies in it already.
bool mayGoInto(const std::string& path, const std::string& folder) {
    return !path.empty() && path != folder && !folder.starts_with(path + "/") &&
           deletingLastPathComponent(path) != folder;
}

} // namespace

bool FolderDrops::canGoInto(const std::string& path, const RBPegItem& folder) const {
    return folder.isFolder && mayGoInto(standardizedPath(path, desktop_.files.homeDirectory()), folder.path);
}

std::vector<std::string> FolderDrops::droppable(const DraggingInfo& drag, const RBPegItem& folder) const {
    std::vector<std::string> files = drag.files();
    std::erase_if(files, [&](const std::string& path) {
        return !mayGoInto(standardizedPath(path, desktop_.files.homeDirectory()), folder.path);
    });
    return files;
}

std::uint32_t FolderDrops::operationFor(const DraggingInfo& drag, const RBPegItem& folder) const {
    if (droppable(drag, folder).empty()) {
        return NoDragOperation;
    }
    if (drag.isFromThisProgram()) {
        return MoveOperation;
    }
    const std::uint32_t allowed = drag.sourceOperationMask();
    const bool mayMove = (allowed & MoveOperation) != 0;
    const bool copies = (desktop_.pointer.modifierFlags() & OptionModifier) != 0;
    if (mayMove && !copies) {
        return MoveOperation;
    }
    if ((allowed & CopyOperation) != 0) {
        return CopyOperation;
    }
    return mayMove ? MoveOperation : NoDragOperation;
}

std::uint32_t FolderDrops::dragUpdated(const RBPegItemRef& folder, const DraggingInfo& drag) {
    const std::uint32_t operation = operationFor(drag, *folder);
    setDropTarget(*folder, operation != NoDragOperation);
    return operation;
}

void FolderDrops::dragExited(const RBPegItemRef& folder) {
    setDropTarget(*folder, false);
}

bool FolderDrops::performDrop(const RBPegItemRef& folder, const DraggingInfo& drag) {
    const std::uint32_t operation = operationFor(drag, *folder);
    const std::vector<std::string> files = droppable(drag, *folder);
    setDropTarget(*folder, false);
    return operation != NoDragOperation && !files.empty() &&
           put(files, folder, operation == MoveOperation) != Outcome::Nothing;
}

void FolderDrops::setDropTarget(RBPegItem& folder, bool on) {
    if (folder.dropTarget == on) {
        return;
    }
    folder.dropTarget = on;
    applyCardScale(folder);
    const Color border = on ? desktop_.appearance.color(SystemColor::ControlAccent) : Color::white(0, 0.1);
    RBAnimateLayerValue(folder.glass, KeyPath::BorderColor, border, lookDuration);
    RBAnimateLayerValue(folder.glass, KeyPath::BorderWidth, on ? 2.5 : 0.5, lookDuration);
    if (on) {
        line_.nudge(folder, 3);
    }
}

// Files on their way into a folder card.
struct FolderDrops::Put {
    std::vector<std::string> paths;
    RBPegItemRef folder;
    bool move = false;
    std::size_t next = 0;
    std::size_t succeeded = 0;
    bool waiting = false; // for the one before `next`
    bool goingOn = false;
    bool finished = false;
};

FolderDrops::Outcome FolderDrops::put(const std::vector<std::string>& paths, const RBPegItemRef& folder, bool move) {
    const auto put = std::make_shared<Put>(Put{.paths = paths, .folder = folder, .move = move});
    goOn(put);
    if (!put->finished) {
        return Outcome::UnderWay;
    }
    return put->succeeded > 0 ? Outcome::WentIn : Outcome::Nothing;
}

// Until one takes a while; its end goes on from there.
void FolderDrops::goOn(const std::shared_ptr<Put>& put) {
    if (put->goingOn) {
        return;
    }
    put->goingOn = true;
    while (!put->waiting && put->next < put->paths.size()) {
        put->waiting = true;
        putOne(put, standardizedPath(put->paths[put->next++], desktop_.files.homeDirectory()));
    }
    put->goingOn = false;
    if (!put->waiting) {
        put->finished = true;
        finish(*put);
    }
}

void FolderDrops::putOne(const std::shared_ptr<Put>& put, const std::string& path) {
    FileOperations::Done done = lifetime_.guard([this, put, path](const std::optional<FileFailure>& failure) {
        placed(*put, path, failure);
        put->waiting = false;
        goOn(put);
    });
    const auto place = [&](FileOperations::Done arrived) {
        placeUnderFreeName(
            desktop_.files, put->folder->path, lastPathComponent(path),
            [&operations = desktop_.fileOperations, path, move = put->move](const std::string& target,
                                                                            FileOperations::Done told) {
                if (move) {
                    operations.moveItem(path, target, std::move(told));
                } else {
                    operations.copyItem(path, target, std::move(told));
                }
            },
            std::move(arrived));
    };
    if (!put->move) {
        place(std::move(done));
    } else if (!line_.transit().send(path, place, done)) {
        done(FileFailure{.reason = "it is on its way already"});
    }
}

void FolderDrops::placed(Put& put, const std::string& path, const std::optional<FileFailure>& failure) {
    if (failure) {
        desktop_.log.write("could not put " + path + " into " + put.folder->path + ": " + failure->reason);
        return;
    }
    ++put.succeeded;
    if (put.move) {
        absorb(path, *put.folder);
    }
}

void FolderDrops::finish(Put& put) {
    if (put.succeeded == 0) {
        desktop_.sounds.beep();
        return;
    }
    const RBPegItemRef& folder = put.folder;
    folder->card->addAnimation(
        "rb.absorb", Animation::spring(KeyPath::Scale, 1.16, 1.0, {.mass = 1, .stiffness = 300, .damping = 12}));
    line_.nudge(*folder, 4);
    flash(folder, put.succeeded == 1 ? "✓ 已放入" : "✓ 已放入 " + std::to_string(put.succeeded) + " 项");
    line_.play("Tink", 0.35);
}

void FolderDrops::absorb(const std::string& path, const RBPegItem& folder) {
    const RBPegItemRef card = line_.itemForPath(path);
    if (!card || card.get() == &folder) {
        return;
    }
    card->absorbed = true;
    card->swing->change().hidden = true;
    if (!card->dragging) {
        line_.removeItem(card, {.quietly = true, .fall = false});
    }
}

void FolderDrops::flash(const RBPegItemRef& item, const std::string& text) {
    const auto capsule = RBCapsule(desktop_, text, flashSize);
    RBSetScale(*capsule, line_.scale());
    capsule->change().anchorPoint = item->pill->model().anchorPoint;
    capsule->change().position = item->pill->model().position;
    capsule->change().opacity = 0;
    item->swing->addSublayer(capsule);
    RBAnimateLayerValue(capsule, KeyPath::Opacity, 1.0, 0.18);
    Animation rise = Animation::basic(KeyPath::PositionY, -4.0, 0.0, 0.22, RBEaseOut);
    rise.parts.front().additive = true;
    capsule->addAnimation("rb.rise", std::move(rise));
    later_.after(flashTime, [capsule] { RBAnimateLayerValue(capsule, KeyPath::Opacity, 0.0, flashFade); });
    later_.after(flashTime + flashGone, [capsule] { capsule->removeFromSuperlayer(); });
}

} // namespace rb
