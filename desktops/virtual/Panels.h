#pragma once

#include "desktops/virtual/Layers.h"
#include "desktops/virtual/Screens.h"
#include "platform/Panels.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace rb {

class VirtualPanels;

class VirtualPanel final : public Panel {
public:
    VirtualPanel(VirtualPanels& panels, const PanelSpec& spec);
    ~VirtualPanel() override;
    VirtualPanel(const VirtualPanel&) = delete;
    VirtualPanel& operator=(const VirtualPanel&) = delete;

    Rect frame() const override { return spec_.frame; }
    void setFrame(const Rect& frame) override;
    void orderFrontRegardless() override;
    void orderOut() override;
    bool isVisible() const override;
    void setIgnoresMouseEvents(bool ignores) override;
    bool setMouseAreas(const std::vector<Rect>& areas) override;
    void setInput(PanelInput* input) override { input_ = input; }
    void beginDrag(const FileDrag& drag) override;
    void showContextMenu(const std::shared_ptr<Menu>& menu, Point location, std::function<void()> closed) override;
    const std::shared_ptr<Layer>& rootLayer() override { return root_; }
    double backingScaleFactor() const override;

    // With the present frame and flags.
    const PanelSpec& spec() const { return spec_; }
    PanelInput* input() const { return input_; }
    bool takesMouseAt(Point location) const;

private:
    void layOut();

    VirtualPanels& panels_;
    PanelSpec spec_;
    PanelInput* input_ = nullptr;
    std::vector<Rect> areas_;
    std::shared_ptr<Layer> root_ = Layer::create();
};

class VirtualPanels final : public Panels {
public:
    VirtualPanels(const VirtualRunLoop& loop, VirtualLayers& layers, const VirtualScreens& screens)
        : loop_(loop)
        , layers_(layers)
        , screens_(screens) {}

    std::unique_ptr<Panel> createPanel(const PanelSpec& spec) override;

    // From now on panels can take the mouse in parts.
    void letPanelsHaveMouseAreas() { mouseAreas_ = true; }
    // From the backmost to the frontmost, by level and then by when they were ordered front.
    std::vector<VirtualPanel*> visible() const;
    // The frontmost one that takes the mouse there, or null.
    VirtualPanel* under(Point location) const;
    // The open context menu, or null; choosing from it is the test's, and so is closing it.
    const std::shared_ptr<Menu>& contextMenu() const { return contextMenu_; }
    void closeContextMenu();
    // The file that is being dragged out of a panel.
    const std::optional<FileDrag>& outgoingDrag() const { return outgoing_; }
    std::optional<FileDrag> takeOutgoingDrag() { return std::exchange(outgoing_, std::nullopt); }

private:
    friend class VirtualPanel;

    const VirtualRunLoop& loop_;
    VirtualLayers& layers_;
    const VirtualScreens& screens_;
    std::vector<VirtualPanel*> ordered_;
    bool mouseAreas_ = false;
    std::shared_ptr<Menu> contextMenu_;
    std::function<void()> menuClosed_;
    std::optional<FileDrag> outgoing_;
};

} // namespace rb
