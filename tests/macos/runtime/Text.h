#pragma once

#include <string>

namespace rb::fake {

// Between the UTF-8 of C++ and the UTF-16 of NSString. Unpaired halves become U+FFFD.
std::u16string toUtf16(const std::string& utf8);
std::string fromUtf16(const char16_t* text, std::size_t length);

} // namespace rb::fake
