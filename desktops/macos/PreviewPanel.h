#pragma once

#include "platform/PreviewPanel.h"

@class QLPreviewPanel;
@class RBMacPreviewSource;

namespace rb {

// The shared preview panel, which is made only when it is first asked to show something.
class MacPreviewPanel final : public PreviewPanel {
public:
    MacPreviewPanel();
    ~MacPreviewPanel() override;
    MacPreviewPanel(const MacPreviewPanel&) = delete;
    MacPreviewPanel& operator=(const MacPreviewPanel&) = delete;

    bool isVisible() const override;
    void updateController() override;
    void setDelegate(PreviewPanelDelegate* delegate) override;
    void reloadData() override;
    std::size_t currentPreviewItemIndex() const override;
    void setCurrentPreviewItemIndex(std::size_t index) override;
    void makeKeyAndOrderFront() override;

private:
    RBMacPreviewSource* source_;
};

} // namespace rb
