#pragma once

#include "platform/Desktop.h"
#include "platform/Menu.h"
#include "platform/PreviewPanel.h"

#include <memory>

namespace rb {

// Placeholder of the clothesline, with the small surface that the spine uses.
class RBClothesline {
public:
    explicit RBClothesline(const Desktop& /*desktop*/) {}

    void start() {}
    const std::shared_ptr<Menu>& menu() const { return menu_; }
    void restoreScreenshotSettings() {}
    void beginPreviewPanelControl(PreviewPanel& /*panel*/) {}
    void endPreviewPanelControl(PreviewPanel& /*panel*/) {}

private:
    std::shared_ptr<Menu> menu_ = std::make_shared<Menu>("晾衣绳");
};

} // namespace rb
