#include "clothesline/QuickLook.h"

#include "clothesline/Clothesline.h"
#include "platform/Application.h"

#include <algorithm>

namespace rb {

namespace {

constexpr std::uint16_t leftArrow = 123;
constexpr std::uint16_t rightArrow = 124;

} // namespace

QuickLook::~QuickLook() {
    if (controlled_) {
        controlled_->setDelegate(nullptr);
    }
}

void QuickLook::quickLookItem(const RBPegItemRef& item) {
    const auto& items = line_.items();
    const auto found = std::find(items.begin(), items.end(), item);
    if (found == items.end()) {
        return;
    }
    previewPaths_.clear();
    for (const RBPegItemRef& hanging : items) {
        previewPaths_.push_back(hanging->path);
    }
    desktop_.application.activateIgnoringOtherApps();
    PreviewPanel& panel = desktop_.previewPanel;
    panel.updateController();
    panel.reloadData();
    panel.setCurrentPreviewItemIndex(static_cast<std::size_t>(found - items.begin()));
    panel.makeKeyAndOrderFront();
}

void QuickLook::beginPreviewPanelControl(PreviewPanel& panel) {
    controlled_ = &panel;
    panel.setDelegate(this);
}

void QuickLook::endPreviewPanelControl(PreviewPanel& panel) {
    panel.setDelegate(nullptr);
    controlled_ = nullptr;
}

std::optional<std::string> QuickLook::previewItemAtIndex(std::size_t index) {
    return index < previewPaths_.size() ? std::optional(previewPaths_[index]) : std::nullopt;
}

bool QuickLook::handleEvent(const KeyEvent& event) {
    if (event.keyCode != leftArrow && event.keyCode != rightArrow) {
        return false;
    }
    PreviewPanel& panel = desktop_.previewPanel;
    const std::size_t index = panel.currentPreviewItemIndex();
    if (event.keyCode == leftArrow && index > 0) {
        panel.setCurrentPreviewItemIndex(index - 1);
    } else if (event.keyCode == rightArrow && index + 1 < previewPaths_.size()) {
        panel.setCurrentPreviewItemIndex(index + 1);
    }
    return true;
}

} // namespace rb
