#pragma once

namespace rb {

enum class FontWeight { Regular, Medium, Semibold, Bold };

// The system's interface font; size in points.
struct Font {
    double size = 13;
    FontWeight weight = FontWeight::Regular;
    friend bool operator==(const Font&, const Font&) = default;
};

} // namespace rb
