#pragma once

#include "platform/Screens.h"

namespace rb {

class MacScreens final : public Screens {
public:
    std::vector<Screen> all() const override;
    std::optional<Screen> main() const override;
    Handle onChange(std::function<void()> changed) override;
};

} // namespace rb
