#pragma once

#include "platform/Window.h"

namespace rb {

// Titled NSWindows.
class MacWindows final : public Windows {
public:
    std::unique_ptr<Window> createWindow(const WindowSpec& spec) override;
    bool isApplicationActive() const override;
    bool hasKeyWindow() const override;
};

} // namespace rb
