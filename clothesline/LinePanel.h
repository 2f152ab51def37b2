#pragma once

#include "clothesline/PegItem.h"
#include "platform/Desktop.h"
#include "platform/Panels.h"
#include "platform/RunLoop.h"
#include "platform/Screens.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace rb {

class RBClothesline;

// The strip under the menu bar with the rope and everything that hangs from it: where it is, how it looks, and how it
// drops into view and goes away. It never takes the focus.
class RBLinePanel {
public:
    RBLinePanel(const Desktop& desktop, RBClothesline& line)
        : desktop_(desktop)
        , line_(line)
        , orderOut_(desktop.runLoop) {}

    // The input outlives the panel.
    void buildPanel(PanelInput& input);
    bool isBuilt() const { return panel_ != nullptr; }
    // To the top of that screen, else of the one under the pointer, else of the main or the first one.
    void placeOnScreen(std::optional<Screen> screen);
    // The hidden line goes to the pointer's screen, the revealed one stays on its own.
    void screensChanged();

    bool revealed() const { return revealed_; }
    void setRevealed(bool revealed);
    bool isVisible() const { return panel_ && panel_->isVisible(); }
    void setIgnoresMouseEvents(bool ignores) { panel_->setIgnoresMouseEvents(ignores); }
    bool setMouseAreas(const std::vector<Rect>& areas) { return panel_->setMouseAreas(areas); }

    // Screen coordinates; empty before the panel is built.
    Rect frame() const { return panel_ ? panel_->frame() : Rect{}; }
    double width() const { return frame().width; }
    // Once built.
    Panel& panel() { return *panel_; }
    // The screen it was last placed on, as it is now; nothing when that screen is gone.
    std::optional<Screen> screen() const;
    // Pixels per point.
    double scale() const;

    const std::shared_ptr<Layer>& slide() const { return slide_; }
    const std::shared_ptr<Layer>& dropGlow() const { return dropGlow_; }
    const std::shared_ptr<Layer>& ropeCore() const { return ropeCore_; }

    // The hint of an empty line; empty for none.
    void showHint(const std::string& text);

private:
    void rootResized();
    void positionHint();
    double slideOffset() const;

    const Desktop& desktop_;
    RBClothesline& line_;
    std::unique_ptr<Panel> panel_;
    std::shared_ptr<Layer> slide_;
    std::shared_ptr<Layer> rope_;
    std::shared_ptr<Layer> ropeCore_;
    std::shared_ptr<Layer> ropeLight_;
    std::shared_ptr<Layer> ropeFade_;
    std::shared_ptr<Layer> dropGlow_;
    std::shared_ptr<Layer> hint_;
    std::string hintString_;
    std::optional<std::uint32_t> screenId_;
    bool revealed_ = false;
    // Bumped on every change of `revealed_`: only the latest retract may take the panel off the screen.
    std::uint64_t hideGeneration_ = 0;
    DelayedCalls orderOut_;
};

} // namespace rb
