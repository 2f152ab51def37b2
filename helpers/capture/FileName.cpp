#include "helpers/capture/FileName.h"

#include <algorithm>
#include <array>

namespace rb {

std::string captureName(const std::tm& time, bool chinese) {
    std::array<char, 64> text{};
    // Points instead of colons: file systems of other systems take no colon.
    const char* format = chinese ? "截屏%Y-%m-%d %H.%M.%S" : "Screenshot %Y-%m-%d at %H.%M.%S";
    const std::size_t length = std::strftime(text.data(), text.size(), format, &time);
    return {text.data(), length};
}

std::string numberedName(const std::string& name, int number) {
    return number == 1 ? name : name + " (" + std::to_string(number) + ")";
}

bool speaksChinese(const std::function<std::string(const char*)>& variable) {
    std::string locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        locale = variable(name);
        if (!locale.empty()) {
            break;
        }
    }
    // The list of languages counts unless the session has no language at all.
    const bool plain = locale.empty() || locale == "C" || locale == "POSIX" || locale.starts_with("C.");
    const std::string languages = plain ? std::string() : variable("LANGUAGE");
    return (languages.empty() ? locale : languages).starts_with("zh");
}

NameParts nameParts(const std::string& fileName) {
    const std::size_t dot = fileName.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == fileName.size()) {
        return {.name = fileName, .extension = {}};
    }
    std::string extension = fileName.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return {.name = fileName.substr(0, dot), .extension = std::move(extension)};
}

} // namespace rb
