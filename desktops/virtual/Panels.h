#pragma once

#include "desktops/virtual/Layers.h"
#include "desktops/virtual/Screens.h"
#include "platform/Panels.h"

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
    const std::shared_ptr<Layer>& rootLayer() override { return root_; }
    double backingScaleFactor() const override;

    // With the present frame and flags.
    const PanelSpec& spec() const { return spec_; }

private:
    void layOut();

    VirtualPanels& panels_;
    PanelSpec spec_;
    std::shared_ptr<Layer> root_ = Layer::create();
};

class VirtualPanels final : public Panels {
public:
    VirtualPanels(const VirtualRunLoop& loop, VirtualLayers& layers, const VirtualScreens& screens)
        : loop_(loop)
        , layers_(layers)
        , screens_(screens) {}

    std::unique_ptr<Panel> createPanel(const PanelSpec& spec) override;

    // From the backmost to the frontmost, by level and then by when they were ordered front.
    std::vector<VirtualPanel*> visible() const;

private:
    friend class VirtualPanel;

    const VirtualRunLoop& loop_;
    VirtualLayers& layers_;
    const VirtualScreens& screens_;
    std::vector<VirtualPanel*> ordered_;
};

} // namespace rb
