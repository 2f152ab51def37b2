#include "desktops/linux/UriList.h"

#include <array>
#include <optional>
#include <unistd.h>

namespace rb {

namespace {

std::optional<unsigned> hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return static_cast<unsigned>(c - '0');
    }
    const char lower = static_cast<char>(c | 0x20);
    if (lower >= 'a' && lower <= 'f') {
        return static_cast<unsigned>(lower - 'a') + 10;
    }
    return std::nullopt;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '%') {
            const auto high = i + 2 < text.size() ? hexDigit(text[i + 1]) : std::nullopt;
            const auto low = high ? hexDigit(text[i + 2]) : std::nullopt;
            if (!low) {
                return std::nullopt;
            }
            c = static_cast<char>(*high * 16 + *low);
            i += 2;
        }
        if (c == '\0') {
            return std::nullopt;
        }
        decoded += c;
    }
    return decoded;
}

bool startsWithScheme(std::string_view uri) {
    constexpr std::string_view scheme = "file:";
    if (uri.size() < scheme.size()) {
        return false;
    }
    for (std::size_t i = 0; i < scheme.size(); ++i) {
        const char c = uri[i];
        if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c) != scheme[i]) {
            return false;
        }
    }
    return true;
}

bool isThisMachine(std::string_view host) {
    std::array<char, 256> name{};
    return host.empty() || host == "localhost" ||
           (gethostname(name.data(), name.size() - 1) == 0 && host == std::string_view(name.data()));
}

std::optional<std::string> fileOf(std::string_view uri) {
    if (!startsWithScheme(uri)) {
        return std::nullopt;
    }
    std::string_view rest = uri.substr(5);
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        const std::size_t slash = rest.find('/');
        if (slash == std::string_view::npos || !isThisMachine(rest.substr(0, slash))) {
            return std::nullopt;
        }
        rest.remove_prefix(slash);
    }
    if (!rest.starts_with('/')) {
        return std::nullopt;
    }
    return percentDecoded(rest.substr(0, rest.find_first_of("?#")));
}

} // namespace

std::vector<std::string> filesOfUriList(std::string_view list) {
    std::vector<std::string> files;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find_first_of("\r\n"), list.size());
        std::string_view line = list.substr(0, end);
        list.remove_prefix(std::min(end + 1, list.size()));
        // Some programs end the whole with a zero byte.
        while (!line.empty() && (line.back() == '\0' || line.back() == ' ')) {
            line.remove_suffix(1);
        }
        if (auto file = fileOf(line)) {
            files.push_back(std::move(*file));
        }
    }
    return files;
}

} // namespace rb
