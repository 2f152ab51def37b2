#pragma once

#include "desktops/linux/PreviewContent.h"
#include "platform/PreviewPanel.h"

#include <memory>

namespace rb {

class LinuxApplication;
class LinuxWindows;
class RunLoop;
class Thumbnails;

// Our own preview of files, as no desktop here has one for all programs: a window with the keyboard, in which Space
// and Escape close and everything else is its controller's.
class LinuxPreviewPanel final : public PreviewPanel {
public:
    // All of them outlive it.
    LinuxPreviewPanel(LinuxApplication& application, LinuxWindows& windows, RunLoop& loop, Thumbnails& thumbnails);
    ~LinuxPreviewPanel() override;
    LinuxPreviewPanel(const LinuxPreviewPanel&) = delete;
    LinuxPreviewPanel& operator=(const LinuxPreviewPanel&) = delete;

    bool isVisible() const override;
    void updateController() override;
    void setDelegate(PreviewPanelDelegate* delegate) override { delegate_ = delegate; }
    void reloadData() override;
    std::size_t currentPreviewItemIndex() const override { return index_; }
    void setCurrentPreviewItemIndex(std::size_t index) override;
    void makeKeyAndOrderFront() override;

private:
    class Window;

    void show();
    void close();

    LinuxApplication& application_;
    LinuxWindows& windows_;
    RunLoop& loop_;
    Thumbnails& thumbnails_;
    PreviewPanelDelegate* delegate_ = nullptr;
    bool controlled_ = false;
    std::size_t index_ = 0;
    std::unique_ptr<Window> window_; // while it is open
};

} // namespace rb
