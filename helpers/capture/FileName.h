#pragma once

#include <ctime>
#include <functional>
#include <string>

namespace rb {

// The name of a capture without its extension, as "截屏2026-11-23 13.05.30" or "Screenshot 2026-11-23 at 13.05.30".
std::string captureName(const std::tm& time, bool chinese);

// The first name is plain, the second ends with " (2)".
std::string numberedName(const std::string& name, int number);

// Whether the language of messages, as the environment names it, is Chinese. `variable` gives a variable's value,
// empty for none.
bool speaksChinese(const std::function<std::string(const char*)>& variable);

// A path that names a file in two: what comes before the extension, and the extension without the point in lower
// case; empty when the name has none.
struct NameParts {
    std::string name;
    std::string extension;
};
NameParts nameParts(const std::string& fileName);

} // namespace rb
