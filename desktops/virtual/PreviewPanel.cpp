#include "desktops/virtual/PreviewPanel.h"

#include <utility>

namespace rb {

void VirtualPreviewPanel::updateController() {
    ApplicationDelegate* delegate = application_.delegate();
    if (!controller_ && delegate && delegate->acceptsPreviewPanelControl()) {
        controller_ = delegate;
        delegate->beginPreviewPanelControl(*this);
    }
}

std::optional<std::string> VirtualPreviewPanel::shown() const {
    return visible_ && delegate_ ? delegate_->previewItemAtIndex(index_) : std::nullopt;
}

void VirtualPreviewPanel::close() {
    visible_ = false;
    if (ApplicationDelegate* controller = std::exchange(controller_, nullptr)) {
        controller->endPreviewPanelControl(*this);
    }
}

} // namespace rb
