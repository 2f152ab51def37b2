#include "motion/Animation.h"

#include <cassert>
#include <type_traits>
#include <utility>

namespace rb {

namespace {

constexpr double defaultDuration = 0.25;

// Applies a function of two numbers to each pair of components.
template <typename Function>
LayerValue combine(const LayerValue& a, const LayerValue& b, Function function) {
    assert(a.index() == b.index());
    return std::visit(
        [&](const auto& x) -> LayerValue {
            using Kind = std::decay_t<decltype(x)>;
            const auto* other = std::get_if<Kind>(&b);
            if (!other) {
                return x;
            }
            const Kind& y = *other;
            if constexpr (std::is_same_v<Kind, double>) {
                return function(x, y);
            } else if constexpr (std::is_same_v<Kind, Point>) {
                return Point{function(x.x, y.x), function(x.y, y.y)};
            } else if constexpr (std::is_same_v<Kind, Size>) {
                return Size{function(x.width, y.width), function(x.height, y.height)};
            } else {
                return Color{function(x.red, y.red), function(x.green, y.green), function(x.blue, y.blue),
                             function(x.alpha, y.alpha)};
            }
        },
        a);
}

} // namespace

std::string_view keyPathName(KeyPath keyPath) {
    switch (keyPath) {
    case KeyPath::Position:
        return "position";
    case KeyPath::PositionX:
        return "position.x";
    case KeyPath::PositionY:
        return "position.y";
    case KeyPath::TranslationX:
        return "transform.translation.x";
    case KeyPath::TranslationY:
        return "transform.translation.y";
    case KeyPath::RotationZ:
        return "transform.rotation.z";
    case KeyPath::Scale:
        return "transform.scale";
    case KeyPath::Opacity:
        return "opacity";
    case KeyPath::BackgroundColor:
        return "backgroundColor";
    case KeyPath::BorderColor:
        return "borderColor";
    case KeyPath::BorderWidth:
        return "borderWidth";
    case KeyPath::ShadowOpacity:
        return "shadowOpacity";
    case KeyPath::ShadowRadius:
        return "shadowRadius";
    case KeyPath::ShadowOffset:
        return "shadowOffset";
    case KeyPath::StrokeColor:
        return "strokeColor";
    case KeyPath::LineWidth:
        return "lineWidth";
    }
    return "";
}

LayerValue interpolate(const LayerValue& from, const LayerValue& to, double progress) {
    return combine(from, to, [progress](double a, double b) { return a + (b - a) * progress; });
}

LayerValue sum(const LayerValue& a, const LayerValue& b) {
    return combine(a, b, [](double x, double y) { return x + y; });
}

double Animation::resolvedDuration() const {
    if (duration) {
        return *duration;
    }
    const auto* spring = parts.empty() ? nullptr : std::get_if<Spring>(&parts.front().pacing);
    return spring ? spring->settlingDuration() : defaultDuration;
}

Animation Animation::basic(KeyPath keyPath, LayerValue from, LayerValue to, double duration, TimingCurve timing) {
    Animation animation;
    animation.parts.push_back({.keyPath = keyPath, .from = from, .to = to, .pacing = timing});
    animation.duration = duration;
    return animation;
}

Animation Animation::spring(KeyPath keyPath, LayerValue from, LayerValue to, Spring spring) {
    Animation animation;
    animation.parts.push_back({.keyPath = keyPath, .from = from, .to = to, .pacing = spring});
    return animation;
}

} // namespace rb
