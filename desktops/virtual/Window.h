#pragma once

#include "desktops/virtual/ViewLayout.h"
#include "platform/Window.h"

#include <optional>
#include <string>
#include <vector>

namespace rb {

class VirtualWindows;

// A window with laid-out content that a test can click. Acts that a user couldn't do throw ImpossibleAct.
class VirtualWindow final : public Window {
public:
    VirtualWindow(VirtualWindows& windows, const WindowSpec& spec);
    ~VirtualWindow() override;
    VirtualWindow(const VirtualWindow&) = delete;
    VirtualWindow& operator=(const VirtualWindow&) = delete;

    void setContent(View content) override;
    void center() override;
    void makeKeyAndOrderFront() override;
    void orderOut() override;
    bool isVisible() const override;
    bool makeFirstResponder(const std::string& identifier) override;
    Rect frame() const override;

    const WindowSpec& spec() const { return spec_; }
    const View& content() const { return content_; }
    // The area of a view in the content's coordinates: by its identifier, or by its text (a label, a button).
    Rect frameOf(const std::string& identifierOrText) const;
    // In screen coordinates.
    Rect contentFrame() const;
    // The identifier of the first responder (empty when it has none), or nothing.
    std::optional<std::string> firstResponder() const;

    void clickButton(const std::string& title);
    void clickBox(const std::string& identifier);
    // The close button of the title bar.
    void close();
    // False when nobody took the key.
    bool press(const KeyEvent& event);

private:
    friend class VirtualWindows;

    const PlacedView* find(const std::string& identifierOrText) const;
    const BoxView* boxAt(const ViewPath& path) const;
    void setFirstResponder(std::optional<ViewPath> path);
    void requireReachable(const std::string& act) const;
    // Brings the boxes' layers on the screen and off it as the content and the visibility say.
    void showLayers();
    void updateHover();
    void appearanceChanged();

    VirtualWindows& windows_;
    WindowSpec spec_;
    Point origin_; // of the frame
    View content_;
    std::vector<PlacedView> placed_;
    std::optional<ViewPath> firstResponder_;
    std::vector<ViewPath> hovered_;
    std::vector<std::shared_ptr<Layer>> shownLayers_;
};

} // namespace rb
