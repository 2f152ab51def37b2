#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"
#include "platform/PreviewPanel.h"

#include <string>
#include <vector>

namespace rb {

class RBClothesline;

// Shows the line's files in the system's preview; the arrow keys walk along the line.
class QuickLook final : public PreviewPanelDelegate {
public:
    QuickLook(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line) {}
    ~QuickLook() override;
    QuickLook(const QuickLook&) = delete;
    QuickLook& operator=(const QuickLook&) = delete;

    // Nothing for an item that left the line.
    void quickLookItem(const RBPegItemRef& item);
    bool isVisible() const { return desktop_.previewPanel.isVisible(); }

    void beginPreviewPanelControl(PreviewPanel& panel);
    void endPreviewPanelControl(PreviewPanel& panel);

private:
    std::size_t numberOfPreviewItems() override { return previewPaths_.size(); }
    std::optional<std::string> previewItemAtIndex(std::size_t index) override;
    bool handleEvent(const KeyEvent& event) override;

    const Desktop& desktop_;
    RBClothesline& line_;
    std::vector<std::string> previewPaths_;
    PreviewPanel* controlled_ = nullptr;
};

} // namespace rb
