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
    void setFrame(const Rect& frame) override;
    void orderFront() override;
    bool isMiniaturized() const override { return miniaturized_; }
    bool isKeyWindow() const override;
    Handle beginSheet(const Alert& alert, std::function<void(std::size_t button)> answer) override;
    double scrollOffset(const std::string& identifier) const override;
    void setScrollOffset(const std::string& identifier, double offset) override;
    void reveal(const std::string& stackIdentifier, const Reveal& reveal) override;

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
    void miniaturize(bool miniaturized) { miniaturized_ = miniaturized; }
    // The user moves or resizes it.
    void drag(const Rect& frame) { setFrame(frame); }
    // Turns the wheel over a scroll view.
    void scroll(const std::string& identifier, double offset) { setScrollOffset(identifier, offset); }
    void selectItem(const std::string& popUpIdentifier, std::size_t index);
    void clickCheckBox(const std::string& title);

    // The question on the window, or nothing, and all that were asked so far.
    const Alert* sheet() const { return sheet_ ? &sheet_->alert : nullptr; }
    const std::vector<Alert>& sheets() const { return sheets_; }
    void answerSheet(std::size_t button);
    // The entrances played so far.
    const std::vector<std::string>& reveals() const { return reveals_; }
    // False when nobody took the key.
    bool press(const KeyEvent& event);

private:
    friend class VirtualWindows;

    struct Sheet {
        Alert alert;
        std::function<void(std::size_t)> answer;
        unsigned long number = 0;
    };

    void layOutContent();
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
    bool miniaturized_ = false;
    ScrollOffsets scrollOffsets_;
    std::optional<Sheet> sheet_;
    unsigned long nextSheet_ = 0;
    std::vector<Alert> sheets_;
    std::vector<std::string> reveals_;
    std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

} // namespace rb
