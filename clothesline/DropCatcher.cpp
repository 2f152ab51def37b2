#include "clothesline/DropCatcher.h"

#include "app/DefaultsKeys.h"
#include "clothesline/Clothesline.h"
#include "platform/Appearance.h"
#include "platform/Pointer.h"
#include "platform/RandomSource.h"
#include "platform/StatusBar.h"

#include <algorithm>
#include <array>

namespace rb {

namespace {

constexpr double belowBand = 36; // how far the strip reaches under the menu bar
constexpr double edgeMargin = 12;
constexpr double lingerTime = 0.1;
constexpr double tint = 0.14;
constexpr unsigned leftButton = 1;

} // namespace

DropCatcher::~DropCatcher() = default;

void DropCatcher::mouseWentDown() {
    dragBaseline_ = desktop_.dragPasteboard.changeCount();
    dragChecked_ = false;
}

bool DropCatcher::fileDragUnderway() {
    if (line_.draggingOut() || desktop_.dragPasteboard.isOver() ||
        desktop_.dragPasteboard.changeCount() == dragBaseline_) {
        return false;
    }
    if (!dragChecked_) {
        dragChecked_ = true;
        const auto types = desktop_.dragPasteboard.types();
        constexpr std::array wanted{FileURLDragType, FilenamesDragType, URLDragType};
        dragHasFiles_ = types.empty() || std::any_of(wanted.begin(), wanted.end(), [&](const char* type) {
                            return std::find(types.begin(), types.end(), type) != types.end();
                        });
    }
    return dragHasFiles_;
}

void DropCatcher::tick(Point pointer, const Screen* screen) {
    const bool held = (desktop_.pointer.pressedButtons() & leftButton) != 0;
    const bool wanted = held && line_.setting(DefaultsKey::ClotheslineDragReveal) && fileDragUnderway();
    if (wanted && screen) {
        showCatcherOn(*screen);
    } else {
        hideCatcher();
    }
    if (dragActive_ && (!held || desktop_.dragPasteboard.isOver())) {
        dragEnded();
    }
    const double edge =
        screen ? screen->frame.maxY() - RBMenuBarBand(*screen, desktop_.statusBar.thickness()).height - edgeMargin : 0;
    if (wanted && screen && !dragActive_ && pointer.y >= edge) {
        const double now = desktop_.runLoop.now();
        if (!dragSince_) {
            dragSince_ = now;
        } else if (now - *dragSince_ >= lingerTime) {
            beginDropOn(*screen);
        }
    } else if (!dragActive_) {
        dragSince_.reset();
    }
}

// Somewhere else, or nowhere.
void DropCatcher::dragEnded() {
    dragActive_ = false;
    setDropHighlight(false);
    setDropZone(false);
    line_.updateHint();
    if (line_.items().empty()) {
        line_.lineBecameEmpty();
    }
}

void DropCatcher::showCatcherOn(const Screen& screen) {
    const Rect band = RBMenuBarBand(screen, desktop_.statusBar.thickness());
    const Rect frame{screen.frame.x, band.y - belowBand, screen.frame.width, band.height + belowBand};
    if (!catcher_) {
        catcher_ = desktop_.panels.createPanel({.frame = frame,
                                                .level = PopUpMenuWindowLevel,
                                                .collectionBehavior = EverywhereBehavior,
                                                .ignoresMouseEvents = false,
                                                .acceptsFiles = true});
        catcher_->setInput(this);
    }
    Color color = desktop_.appearance.color(SystemColor::ControlAccent);
    color.alpha = tint;
    Layer& root = *catcher_->rootLayer();
    if (root.model().backgroundColor != color) {
        root.change().backgroundColor = color;
    }
    if (catcher_->frame() != frame) {
        catcher_->setFrame(frame);
    }
    if (!catcher_->isVisible()) {
        root.change().opacity = 0;
        catcher_->orderFrontRegardless();
        RBAnimateLayerValue(catcher_->rootLayer(), KeyPath::Opacity, 1.0, 0.15);
    }
}

void DropCatcher::hideCatcher() {
    if (isShowing()) {
        catcher_->orderOut();
    }
}

std::uint32_t DropCatcher::dropEntered(const DraggingInfo& drag) {
    if (drag.isFromThisProgram() || drag.files().empty()) {
        return NoDragOperation;
    }
    if (!dragActive_ || !line_.revealed()) {
        beginDropOn(RBScreenAt(desktop_.screens, desktop_.pointer.location()));
    }
    setDropHighlight(true);
    const std::uint32_t allowed = drag.sourceOperationMask();
    for (const DragOperation preferred : {GenericOperation, LinkOperation}) {
        if ((allowed & preferred) != 0) {
            return preferred;
        }
    }
    return allowed & CopyOperation;
}

bool DropCatcher::performDrop(const DraggingInfo& drag) {
    setDropHighlight(false);
    // One's own card over the line is no drop of files; releasing it there leaves it where it hangs.
    const std::vector<std::string> files = drag.isFromThisProgram() ? std::vector<std::string>{} : drag.files();
    if (files.empty()) {
        return false;
    }
    dragActive_ = false;
    setDropZone(false);
    hideCatcher();
    line_.hangOneByOne(files);
    return true;
}

void DropCatcher::beginDropOn(const std::optional<Screen>& screen) {
    if (dragActive_ && line_.revealed()) {
        return;
    }
    dragActive_ = true;
    dragSince_.reset();
    const auto shown = line_.panelScreen();
    if (!line_.revealed() || (screen && (!shown || shown->id != screen->id))) {
        line_.placeOnScreen(screen);
    }
    line_.updateHint();
    setDropZone(true);
    line_.setRevealed(true);
    line_.setIgnoresMouseEvents(false);
}

void DropCatcher::setDropZone(bool on) {
    const auto& glow = line_.dropGlow();
    if (on) {
        Color accent = desktop_.appearance.color(SystemColor::ControlAccent);
        const auto at = [&accent](double alpha) {
            accent.alpha = alpha;
            return accent;
        };
        glow->change().content = GradientContent{.colors = {at(0.05), at(0.10), at(0.22)},
                                                 .locations = {0, 0.55, 1},
                                                 .startPoint = {0.5, 0},
                                                 .endPoint = {0.5, 1}};
    }
    const double opacity = on ? 1 : 0;
    if (glow->model().opacity != opacity) {
        RBAnimateLayerValue(glow, KeyPath::Opacity, opacity, on ? 0.18 : 0.25);
    }
}

void DropCatcher::setDropHighlight(bool on) {
    if (dropHighlighted_ == on) {
        return;
    }
    dropHighlighted_ = on;
    const Color stroke = on ? desktop_.appearance.color(SystemColor::ControlAccent) : Color::white(0.55, 1);
    RBAnimateLayerValue(line_.ropeCore(), KeyPath::StrokeColor, stroke, 0.2);
    RBAnimateLayerValue(line_.ropeCore(), KeyPath::LineWidth, on ? 2.4 : 1.2, 0.2);
    if (on) {
        for (const RBPegItemRef& item : line_.items()) {
            line_.nudge(*item, desktop_.random.between(1.5, 3.0));
        }
    }
}

} // namespace rb
