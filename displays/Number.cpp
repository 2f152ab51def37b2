#include "displays/Number.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace rb {

namespace {

template <typename... Values>
std::string print(const char* format, Values... values) {
    std::array<char, 400> buffer{}; // the longest double has 309 digits before the point
    const int length = std::snprintf(buffer.data(), buffer.size(), format, values...);
    std::string text(buffer.data(), length > 0 ? std::min(static_cast<std::size_t>(length), buffer.size() - 1) : 0);
    for (char& c : text) {
        const bool ours = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == '-' || c == '+';
        c = ours ? c : '.';
    }
    return text;
}

} // namespace

std::string fixedText(double number, int digits) {
    return print("%.*f", digits, number);
}

std::string plainText(double number) {
    constexpr double exactIntegers = 1e15;
    if (std::abs(number) < exactIntegers && number == std::floor(number)) {
        return print("%.0f", number + 0.0); // never "-0"
    }
    return print("%.10g", number);
}

} // namespace rb
