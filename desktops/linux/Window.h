#pragma once

#include "desktops/linux/RealizedView.h"
#include "platform/Window.h"

#include <memory>

class QKeyEvent;

namespace rb {

class AlertDialog;
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
    void setFrame(const Rect& frame) override;
    void orderFront() override;
    bool isMiniaturized() const override;
    bool isKeyWindow() const override;
    Handle beginSheet(const Alert& alert, std::function<void(std::size_t button)> answer) override;
    double scrollOffset(const std::string& identifier) const override;
    void setScrollOffset(const std::string& identifier, double offset) override;
    void reveal(const std::string& stackIdentifier, const Reveal& reveal) override;

    void themeChanged();
    QWidget& topLevel() const;
    // The question on the window; null when there is none.
    AlertDialog* sheet() const { return sheet_.get(); }

private:
    class TopLevel;
    RealizedView* find(const std::string& identifier) const;
    void usePalette();
    void endSheet();

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
    std::unique_ptr<AlertDialog> sheet_;
    unsigned long sheetNumber_ = 0;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace rb
