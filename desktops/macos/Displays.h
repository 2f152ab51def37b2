#pragma once

#include "platform/Displays.h"

namespace rb {

// The screens' displays and modes, from CoreGraphics.
class MacDisplays final : public Displays {
public:
    std::vector<ConnectedDisplay> all() const override;
    std::optional<ConnectedDisplay> display(std::uint32_t id) const override;
    // The screens' own notification covers modes and arrangement.
    Handle onChange(std::function<void()> /*changed*/) override { return {}; }
};

} // namespace rb
