#pragma once

#include "platform/PreviewPanel.h"

@class QLPreviewPanel;

namespace rb {

// The shared preview panel while this program controls it.
class MacPreviewPanel final : public PreviewPanel {
public:
    explicit MacPreviewPanel(QLPreviewPanel* panel)
        : panel_(panel) {}
    QLPreviewPanel* panel() const { return panel_; }

private:
    QLPreviewPanel* panel_;
};

} // namespace rb
