#pragma once

#include <string>

namespace rb {

// The number with that many digits behind the point, whatever the session's locale writes instead of the point.
std::string fixedText(double number, int digits);
// A short text of a number, at most ten digits: "100", "59.94". Huge and tiny ones get an exponent.
std::string plainText(double number);

} // namespace rb
