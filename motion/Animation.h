#pragma once

#include "motion/Color.h"
#include "motion/Geometry.h"
#include "motion/Spring.h"
#include "motion/TimingCurve.h"

#include <functional>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace rb {

// The layer properties that can move. Each has Core Animation's name (keyPathName), which also makes the
// animation keys "rb.<key path>".
enum class KeyPath {
    Position,
    PositionX,
    PositionY,
    TranslationX,
    TranslationY,
    RotationZ,
    Scale,
    Opacity,
    BackgroundColor,
    BorderColor,
    BorderWidth,
    ShadowOpacity,
    ShadowRadius,
    ShadowOffset,
    StrokeColor,
    LineWidth,
};

// "position", "transform.rotation.z", "shadowOpacity" …
std::string_view keyPathName(KeyPath keyPath);

// What a key path holds: a number, a Point (Position), a Size (ShadowOffset) or a Color.
using LayerValue = std::variant<double, Point, Size, Color>;

// Component-wise from + (to − from) · progress, and a + b. Both values must be of the same kind.
LayerValue interpolate(const LayerValue& from, const LayerValue& to, double progress);
LayerValue sum(const LayerValue& a, const LayerValue& b);

struct PropertyAnimation {
    KeyPath keyPath = KeyPath::Opacity;
    LayerValue from = 0.0;
    LayerValue to = 0.0;
    std::variant<TimingCurve, Spring> pacing = TimingCurve::linear();
    // Additive animations add their value to what lies beneath instead of replacing it.
    bool additive = false;
};

// One or several property animations that run together under one key. Never changes the layer's model.
struct Animation {
    std::vector<PropertyAnimation> parts = {};
    // Seconds. Absent: the settling duration of the first part's spring (0.25 s for a curve).
    std::optional<double> duration = std::nullopt;
    // Media time at which it begins; absent: when it is added. Before its beginning it has no effect.
    std::optional<double> beginTime = std::nullopt;
    // The pacing of the whole group; the parts' own pacing applies within it.
    TimingCurve groupTiming = TimingCurve::linear();
    // Keeps the end value showing after the end (fill mode forwards, not removed on completion).
    bool holdsAtEnd = false;
    // Called once, on the main thread, when the animation ends or is replaced or removed (finished = false); never
    // when its layer is destroyed.
    std::function<void(bool finished)> completion = nullptr;

    double resolvedDuration() const;

    static Animation basic(KeyPath keyPath, LayerValue from, LayerValue to, double duration,
                           TimingCurve timing = TimingCurve::linear());
    static Animation spring(KeyPath keyPath, LayerValue from, LayerValue to, Spring spring);
};

} // namespace rb
