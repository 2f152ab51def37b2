#pragma once

#include "desktops/virtual/Window.h"

#include "desktops/virtual/Alerts.h"
#include "desktops/virtual/Appearance.h"
#include "desktops/virtual/Application.h"
#include "desktops/virtual/Layers.h"
#include "desktops/virtual/Pointer.h"
#include "desktops/virtual/Screens.h"

namespace rb {

// The program's windows and what all of them share: their stacking, the key window, the mouse.
class VirtualWindows final : public Windows {
public:
    struct Surroundings {
        const VirtualRunLoop& loop;
        VirtualLayers& layers;
        VirtualApplication& application;
        const VirtualAlerts& alerts;
        const VirtualScreens& screens;
        VirtualPointer& pointer;
        VirtualAppearance& appearance;
        const TextMeter& meter;
        Journal& journal;
    };
    explicit VirtualWindows(const Surroundings& surroundings);

    std::unique_ptr<Window> createWindow(const WindowSpec& spec) override;
    bool isApplicationActive() const override { return surroundings_.application.isActive(); }
    bool hasKeyWindow() const override { return keyWindow() != nullptr; }

    // From the backmost to the frontmost.
    const std::vector<VirtualWindow*>& visible() const { return ordered_; }
    // The one that takes the keyboard: only while the program is active. Null when there is none.
    VirtualWindow* keyWindow() const;
    // Created and not yet destroyed, visible or not; throws ImpossibleAct when there is none with that title.
    VirtualWindow& titled(const std::string& title) const;
    std::size_t count() const { return all_.size(); }

private:
    friend class VirtualWindow;

    VirtualWindow* underPointer() const;
    void updateHover();

    Surroundings surroundings_;
    std::vector<VirtualWindow*> all_;
    std::vector<VirtualWindow*> ordered_;
    VirtualWindow* key_ = nullptr;
    Handle pointerMoves_;
    Handle activeChanges_;
    Handle appearanceChanges_;
};

} // namespace rb
