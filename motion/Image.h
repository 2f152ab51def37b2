#pragma once

#include "motion/Color.h"
#include "motion/Font.h"
#include "motion/Geometry.h"

#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace rb {

// Decoded pixels in the form the desktop draws (each desktop derives its own). Immutable, so it may be made on
// a background thread and handed over.
class Bitmap {
public:
    virtual ~Bitmap() = default;
    virtual Size pixelSize() const = 0;
    // What it measures in points where the place doesn't say; a point per pixel, unless it was made for a size.
    virtual Size pointSize() const { return pixelSize(); }
};

// A symbol of the system's set, by name ("lock.display"). Size 0 means the size that the place calls for
// (a menu row, a status item). Without a tint the place's own foreground colour is used.
struct Symbol {
    std::string name = {};
    double pointSize = 0;
    FontWeight weight = FontWeight::Regular;
    std::optional<Color> tint = std::nullopt;
    std::string accessibilityDescription = {};
    friend bool operator==(const Symbol&, const Symbol&) = default;
};

// Nothing, a symbol, or a picture shared by everyone who shows it.
using Image = std::variant<std::monostate, Symbol, std::shared_ptr<const Bitmap>>;

} // namespace rb
