#include "desktops/virtual/TextMeter.h"

namespace rb {

namespace {

// In units of the font size. Chinese, arrows and signs take a full square, everything up to U+10FF half of one.
constexpr double wideAdvance = 1.0;
constexpr double narrowAdvance = 0.5;
constexpr double lineHeight = 1.25;
constexpr double symbolBreadth = 1.25;
constexpr double defaultSymbolSize = 13;

} // namespace

Size VirtualTextMeter::textSize(const std::string& text, const Font& font) const {
    double advance = 0;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if ((byte & 0xC0U) == 0x80U) {
            continue; // belongs to the character before
        }
        advance += byte > 0xE1 ? wideAdvance : narrowAdvance;
    }
    return {advance * font.size, lineHeight * font.size};
}

Size VirtualTextMeter::symbolSize(const Symbol& symbol) const {
    if (symbol.name.empty() || missing_.contains(symbol.name)) {
        return {};
    }
    const double size = symbolBreadth * (symbol.pointSize > 0 ? symbol.pointSize : defaultSymbolSize);
    return {size, size};
}

} // namespace rb
