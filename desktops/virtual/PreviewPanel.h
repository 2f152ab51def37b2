#pragma once

#include "desktops/virtual/Application.h"
#include "platform/PreviewPanel.h"

namespace rb {

// The file preview, which shows nothing but remembers what it would.
class VirtualPreviewPanel final : public PreviewPanel {
public:
    explicit VirtualPreviewPanel(const VirtualApplication& application)
        : application_(application) {}

    bool isVisible() const override { return visible_; }
    void updateController() override;
    void setDelegate(PreviewPanelDelegate* delegate) override { delegate_ = delegate; }
    void reloadData() override { index_ = 0; }
    std::size_t currentPreviewItemIndex() const override { return index_; }
    void setCurrentPreviewItemIndex(std::size_t index) override { index_ = index; }
    void makeKeyAndOrderFront() override { visible_ = true; }

    // What the user sees.
    std::optional<std::string> shown() const;
    // False when the controller left the key alone.
    bool press(const KeyEvent& event) { return delegate_ && delegate_->handleEvent(event); }
    void close();
    bool isControlled() const { return delegate_ != nullptr; }

private:
    const VirtualApplication& application_;
    PreviewPanelDelegate* delegate_ = nullptr;
    ApplicationDelegate* controller_ = nullptr;
    std::size_t index_ = 0;
    bool visible_ = false;
};

} // namespace rb
