#pragma once

#include <string>

namespace rb::fake {

// Between the UTF-8 of C++ and the UTF-16 of NSString. Unpaired halves become U+FFFD.
std::u16string toUtf16(const std::string& utf8);
std::string fromUtf16(const char16_t* text, std::size_t length);

// Parts of paths, as NSString and NSURL give them.
std::string lastComponent(std::string path);
std::string withoutLastComponent(const std::string& path);
std::string extensionOf(const std::string& path); // without the dot
std::string joined(std::string path, const std::string& component);

} // namespace rb::fake
