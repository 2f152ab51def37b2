#include "desktops/linux/UriList.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <optional>
#include <unistd.h>

namespace rb {

namespace {

int hexDigit(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '%') {
            decoded += text[index];
            continue;
        }
        if (index + 2 >= text.size()) {
            return std::nullopt;
        }
        const int high = hexDigit(text[index + 1]);
        const int low = hexDigit(text[index + 2]);
        // No file name holds a byte of zero.
        if (high < 0 || low < 0 || high + low == 0) {
            return std::nullopt;
        }
        decoded += static_cast<char>(high * 16 + low);
        index += 2;
    }
    return decoded;
}

bool isThisHost(std::string_view host) {
    std::array<char, 256> name{};
    return host.empty() || host == "localhost" ||
           (gethostname(name.data(), name.size() - 1) == 0 && host == name.data());
}

std::optional<std::string> localFile(std::string_view uri) {
    constexpr std::string_view scheme = "file:";
    if (uri.size() <= scheme.size() || !std::equal(scheme.begin(), scheme.end(), uri.begin(), [](char wanted, char is) {
            return wanted == std::tolower(static_cast<unsigned char>(is));
        })) {
        return std::nullopt;
    }
    uri.remove_prefix(scheme.size());
    if (uri.starts_with("//")) {
        uri.remove_prefix(2);
        const std::size_t slash = std::min(uri.find('/'), uri.size());
        if (!isThisHost(uri.substr(0, slash))) {
            return std::nullopt;
        }
        uri.remove_prefix(slash);
    }
    if (!uri.starts_with('/')) {
        return std::nullopt;
    }
    return percentDecoded(uri);
}

} // namespace

std::vector<std::string> localFilesOf(std::string_view uriList) {
    std::vector<std::string> paths;
    for (std::size_t start = 0; start < uriList.size();) {
        const std::size_t end = std::min(uriList.find_first_of(std::string_view("\r\n\0", 3), start), uriList.size());
        if (auto path = localFile(uriList.substr(start, end - start))) {
            // Folders may end with a slash; paths of the product don't.
            while (path->size() > 1 && path->ends_with('/')) {
                path->pop_back();
            }
            paths.push_back(std::move(*path));
        }
        start = end + 1;
    }
    return paths;
}

std::string fileUri(std::string_view path) {
    constexpr std::string_view plain = "/-._~!$&'()*+,;=:@";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string uri = "file://";
    for (const char character : path) {
        const auto byte = static_cast<std::uint8_t>(character);
        if (byte < 0x80 && (std::isalnum(byte) != 0 || plain.find(character) != std::string_view::npos)) {
            uri += character;
        } else {
            uri += '%';
            uri += digits[byte >> 4U];
            uri += digits[byte & 0xFU];
        }
    }
    return uri;
}

} // namespace rb
