#include "tests/macos/runtime/Text.h"

namespace rb::fake {

std::u16string toUtf16(const std::string& utf8) {
    std::u16string result;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i++]);
        const int more = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : lead >= 0xc0 ? 1 : 0;
        char32_t code = more == 0 ? lead : lead & (0x3fu >> more);
        for (int k = 0; k < more && i < utf8.size(); ++k)
            code = code << 6 | (static_cast<unsigned char>(utf8[i++]) & 0x3fu);
        if (code < 0x10000) {
            result += static_cast<char16_t>(code);
        } else {
            result += static_cast<char16_t>(0xd800 + ((code - 0x10000) >> 10));
            result += static_cast<char16_t>(0xdc00 + ((code - 0x10000) & 0x3ff));
        }
    }
    return result;
}

std::string fromUtf16(const char16_t* text, std::size_t length) {
    std::string result;
    for (std::size_t i = 0; i < length; ++i) {
        char32_t code = text[i];
        const bool isHigh = code >= 0xd800 && code < 0xdc00;
        if (isHigh && i + 1 < length && text[i + 1] >= 0xdc00 && text[i + 1] < 0xe000)
            code = 0x10000 + ((code - 0xd800) << 10) + (text[++i] - 0xdc00u);
        else if (code >= 0xd800 && code < 0xe000)
            code = 0xfffd;
        if (code < 0x80) {
            result += static_cast<char>(code);
            continue;
        }
        const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        const unsigned lead[] = {0, 0xc0, 0xe0, 0xf0};
        result += static_cast<char>(lead[more] | code >> (6 * more));
        for (int k = more - 1; k >= 0; --k)
            result += static_cast<char>(0x80 | ((code >> (6 * k)) & 0x3f));
    }
    return result;
}

std::string lastComponent(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path.substr(path.rfind('/') == std::string::npos || path == "/" ? 0 : path.rfind('/') + 1);
}

std::string withoutLastComponent(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return "";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string extensionOf(const std::string& path) {
    const std::string name = lastComponent(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

std::string joined(std::string path, const std::string& component) {
    if (!path.empty() && path.back() != '/')
        path += '/';
    return path + component;
}

} // namespace rb::fake
