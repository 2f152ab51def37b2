#pragma once

#include "desktops/linux/RealizedView.h"
#include "platform/Window.h"

#include <memory>

class QKeyEvent;

namespace rb {

class BoxWidget;
class LinuxWindows;

// A window of the program. First responder is what the window remembers, not where the session's keyboard is: a
// window that lies behind others keeps it, as on macOS.
class LinuxWindow final : public Window, private ContentSurroundings {
public:
    LinuxWindow(LinuxWindows& windows, const WindowSpec& spec);
    ~LinuxWindow() override;
    LinuxWindow(const LinuxWindow&) = delete;
    LinuxWindow& operator=(const LinuxWindow&) = delete;

    void setContent(View content) override;
    void center() override;
    void makeKeyAndOrderFront() override;
    void orderOut() override;
    bool isVisible() const override;
    bool makeFirstResponder(const std::string& identifier) override;
    Rect frame() const override;

    void themeChanged();
    QWidget& topLevel() const;

private:
    class TopLevel;

    LayerTicker& ticker() const override;
    const Pictures& pictures() const override;
    const Theme& theme() const override;
    QWidget& canvas() override;
    void makeFirstResponder(BoxWidget& box) override { setFirstResponder(&box); }
    bool isFirstResponder(const BoxWidget& box) const override { return firstResponder_ == &box; }
    void boxGone(BoxWidget& box) override;

    void setFirstResponder(BoxWidget* box);
    void layOut();
    void showBoxes(bool onScreen);
    bool pressKeyEquivalent(const QKeyEvent& event);
    void closedByUser();

    LinuxWindows& windows_;
    WindowSpec spec_;
    std::unique_ptr<TopLevel> topLevel_;
    RealizedView* root_ = nullptr; // owned by the top level
    BoxWidget* firstResponder_ = nullptr;
};

} // namespace rb
