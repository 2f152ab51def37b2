#pragma once

#include <string>
#include <string_view>

namespace rb {

// Upper case of UTF-8 text for the alphabets found on keyboards: Latin (up to Extended-A), Greek and Cyrillic,
// letter by letter; other characters and malformed bytes stay as they are. ß becomes SS. Independent of the locale.
std::string uppercased(std::string_view text);

} // namespace rb
