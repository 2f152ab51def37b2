#pragma once

#include "platform/Keyboard.h"

#include <cstddef>
#include <optional>
#include <string>

namespace rb {

// Whoever controls the preview panel: what it shows, and keys that it leaves to its controller.
class PreviewPanelDelegate {
public:
    virtual ~PreviewPanelDelegate() = default;
    virtual std::size_t numberOfPreviewItems() = 0;
    // An absolute path; nothing for an index outside.
    virtual std::optional<std::string> previewItemAtIndex(std::size_t index) = 0;
    // Whether the key press was dealt with.
    virtual bool handleEvent(const KeyEvent& event) = 0;
};

// The system's file preview, shared by all programs, which asks the frontmost one's ApplicationDelegate who controls
// it. The user closes it by its own means. Main thread only.
class PreviewPanel {
public:
    virtual ~PreviewPanel() = default;
    virtual bool isVisible() const = 0;
    // Asks anew who controls it.
    virtual void updateController() = 0;
    // Null for nobody; not owned.
    virtual void setDelegate(PreviewPanelDelegate* delegate) = 0;
    virtual void reloadData() = 0;
    virtual std::size_t currentPreviewItemIndex() const = 0;
    virtual void setCurrentPreviewItemIndex(std::size_t index) = 0;
    virtual void makeKeyAndOrderFront() = 0;
};

} // namespace rb
