#pragma once

namespace rb {

// A resolved colour, sRGB components from 0 to 1, not premultiplied. Layers hold only these; colours that
// depend on the appearance are resolved by the Appearance service when they are set.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static constexpr Color white(double level, double alpha) { return {level, level, level, alpha}; }
    static constexpr Color clear() { return {0, 0, 0, 0}; }
    constexpr Color withAlpha(double a) const { return {red, green, blue, a}; }
    friend bool operator==(const Color&, const Color&) = default;
};

} // namespace rb
