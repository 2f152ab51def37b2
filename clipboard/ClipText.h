#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Texts as the user counts and sees them. All take UTF-8; a malformed byte counts as one character and is kept.
namespace rb {

// In UTF-16 units.
std::size_t utf16Length(std::string_view text);
// The first `units` UTF-16 units, without tearing a character apart.
std::string_view utf16Prefix(std::string_view text, std::size_t units);
// Without white space (of any script) and line ends around it.
std::string_view trimmedWhole(std::string_view text);
// Without spaces of any script and tabs around it; line ends stay.
std::string_view trimmedLine(std::string_view line);
// The first line that holds more than that, trimmed; empty for none. Lines end as any system or script ends them.
std::string_view firstLineNotBlank(std::string_view text);

} // namespace rb
