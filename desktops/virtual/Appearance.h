#pragma once

#include "platform/Appearance.h"
#include "platform/Observers.h"

namespace rb {

// Light to begin with. The colours are of our own choosing and differ between light and dark.
class VirtualAppearance final : public Appearance {
public:
    bool isDark() const override { return dark_; }
    Color color(SystemColor color) const override;
    Handle onChange(std::function<void()> changed) override { return observers_.add(std::move(changed)); }

    void setDark(bool dark);

private:
    bool dark_ = false;
    Observers<> observers_;
};

} // namespace rb
