#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace rb {

// Length of the well-formed UTF-8 sequence at `position` (no surrogates, no overlong forms), 0 when there is none.
std::size_t utf8SequenceLength(std::string_view text, std::size_t position);
bool isValidUtf8(std::string_view text);
// With a replacement character for each malformed byte.
std::string wellFormedUtf8(std::string_view text);

} // namespace rb
