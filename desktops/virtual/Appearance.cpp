#include "desktops/virtual/Appearance.h"

#include <utility>

namespace rb {

Color VirtualAppearance::color(SystemColor color) const {
    switch (color) {
    case SystemColor::Green:
        return dark_ ? Color{0.2, 0.85, 0.35, 1} : Color{0.15, 0.75, 0.3, 1};
    case SystemColor::Orange:
        return dark_ ? Color{1, 0.6, 0.05, 1} : Color{1, 0.55, 0, 1};
    case SystemColor::Blue:
        return dark_ ? Color{0.05, 0.5, 1, 1} : Color{0, 0.45, 0.95, 1};
    case SystemColor::ControlAccent:
        return dark_ ? Color{0.1, 0.45, 0.9, 1} : Color{0.05, 0.4, 0.85, 1};
    case SystemColor::ControlBackground:
        return dark_ ? Color::white(0.12, 1) : Color::white(1, 1);
    case SystemColor::Label:
        return dark_ ? Color::white(1, 0.85) : Color::white(0, 0.85);
    case SystemColor::SecondaryLabel:
        return dark_ ? Color::white(1, 0.55) : Color::white(0, 0.5);
    case SystemColor::TertiaryLabel:
        return dark_ ? Color::white(1, 0.25) : Color::white(0, 0.26);
    }
    return {};
}

void VirtualAppearance::setDark(bool dark) {
    if (std::exchange(dark_, dark) != dark) {
        observers_.notify();
    }
}

} // namespace rb
