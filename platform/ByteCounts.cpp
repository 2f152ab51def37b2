#include "platform/ByteCounts.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace rb {

std::string plainByteCount(std::int64_t bytes) {
    constexpr double step = 1000;
    constexpr double tenth = 10;
    if (bytes < static_cast<std::int64_t>(step)) {
        return std::to_string(bytes) + " 字节";
    }
    struct Unit {
        const char* name;
        double decimals; // as a factor
    };
    static constexpr std::array<Unit, 4> units{
        {{"KB", 1}, {"MB", tenth}, {"GB", tenth * tenth}, {"TB", tenth * tenth}}};
    double value = static_cast<double>(bytes) / step;
    std::size_t unit = 0;
    // Rounding may lead into the next unit: 999,999 bytes are 1 MB.
    while (unit + 1 < units.size() && std::round(value * units[unit].decimals) / units[unit].decimals >= step) {
        value /= step;
        ++unit;
    }
    const auto scaled = std::llround(value * units[unit].decimals);
    const auto factor = static_cast<long long>(units[unit].decimals);
    std::string text = std::to_string(scaled / factor);
    if (scaled % factor != 0) {
        std::string digits = std::to_string(factor + scaled % factor).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text += "." + digits;
    }
    return text + " " + units[unit].name;
}

} // namespace rb
