#pragma once

#include "motion/Font.h"
#include "motion/Geometry.h"
#include "motion/Image.h"

#include <string>

namespace rb {

// How much room texts and symbols take, in points. Main thread only.
class TextMeter {
public:
    virtual ~TextMeter() = default;
    // One line of UTF-8 text.
    virtual Size textSize(const std::string& text, const Font& font) const = 0;
    // At the symbol's own point size; zero for an unknown name.
    virtual Size symbolSize(const Symbol& symbol) const = 0;
};

} // namespace rb
