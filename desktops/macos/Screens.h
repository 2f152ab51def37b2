#pragma once

#include "desktops/macos/FullScreenSpaces.h"
#include "platform/Screens.h"

namespace rb {

class MacScreens final : public Screens {
public:
    std::vector<Screen> all() const override;
    std::optional<Screen> main() const override;
    bool showsFullScreenSpace(std::uint32_t id) const override { return fullScreenSpaces_.isShownOn(id); }
    Handle onChange(std::function<void()> changed) override;

private:
    FullScreenSpaces fullScreenSpaces_;
};

} // namespace rb
