#pragma once

#include "platform/Appearance.h"

namespace rb {

// The application's effective appearance and the system's colours under it.
class MacAppearance final : public Appearance {
public:
    bool isDark() const override;
    Color color(SystemColor color) const override;
    Handle onChange(std::function<void()> changed) override;
};

} // namespace rb
