#pragma once

#include "motion/Color.h"
#include "platform/Handle.h"

#include <functional>

namespace rb {

enum class SystemColor { Green, Orange, Blue, ControlAccent, ControlBackground, Label, SecondaryLabel, TertiaryLabel };

// Light or dark, and the system's colours in it. Main thread only.
class Appearance {
public:
    virtual ~Appearance() = default;
    virtual bool isDark() const = 0;
    // The colour as it looks now.
    virtual Color color(SystemColor color) const = 0;
    virtual Handle onChange(std::function<void()> changed) = 0;
};

} // namespace rb
