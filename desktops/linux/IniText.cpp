#include "desktops/linux/IniText.h"

#include <QString>

#include <cstddef>
#include <string_view>
#include <vector>

namespace rb {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// With their line ends.
std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
        lines.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

struct Place {
    std::optional<std::size_t> line = std::nullopt; // of the key; the last one counts
    std::optional<std::size_t> end = std::nullopt;  // after the group's last line that isn't blank
};

Place find(const std::vector<std::string_view>& lines, const std::string& group, const std::string& key) {
    Place place;
    bool inside = group.empty();
    if (inside) {
        place.end = 0;
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string_view line = trimmed(lines[i]);
        if (line.starts_with('[') && line.ends_with(']')) {
            inside = line.substr(1, line.size() - 2) == group;
        }
        if (!inside || line.empty()) {
            continue;
        }
        place.end = i + 1;
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos && trimmed(line.substr(0, equals)) == key) {
            place.line = i;
        }
    }
    return place;
}

bool isHexDigit(char16_t unit) {
    return (unit >= '0' && unit <= '9') || (unit >= 'a' && unit <= 'f') || (unit >= 'A' && unit <= 'F');
}

int hexValue(char16_t digit) {
    return digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10;
}

} // namespace

std::optional<std::string> iniValue(const std::string& text, const std::string& group, const std::string& key) {
    const auto lines = linesOf(text);
    const Place place = find(lines, group, key);
    if (!place.line) {
        return std::nullopt;
    }
    const std::string_view line = lines[*place.line];
    return std::string(trimmed(line.substr(line.find('=') + 1)));
}

std::string withIniValue(const std::string& text, const std::string& group, const std::string& key,
                         const std::optional<std::string>& value) {
    const auto lines = linesOf(text);
    const Place place = find(lines, group, key);
    const std::string line = value ? key + "=" + *value + "\n" : std::string();
    std::string result;
    const auto append = [&result](std::string_view part) {
        if (!result.empty() && result.back() != '\n') {
            result += '\n';
        }
        result += part;
    };
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (value && !place.line && place.end == i) {
            append(line);
        }
        if (place.line == i) {
            result += line;
        } else {
            result += lines[i];
        }
    }
    if (value && !place.line && (!place.end || *place.end == lines.size())) {
        if (!place.end) {
            append("[" + group + "]\n");
        }
        append(line);
    }
    return result;
}

std::string qtIniEscaped(const std::string& utf8) {
    std::string result;
    bool quotes = false;
    bool afterHex = false; // a hexadecimal digit would be read as part of the escape before it
    for (const QChar character : QString::fromStdString(utf8)) {
        const char16_t unit = character.unicode();
        if (unit < 0x20 || unit > 0x7e || (afterHex && isHexDigit(unit))) {
            result += "\\x" + QString::number(unit, 16).toStdString();
            afterHex = true;
            continue;
        }
        afterHex = false;
        if (unit == '"' || unit == '\\') {
            result += '\\';
        }
        quotes = quotes || unit == ';' || unit == ',' || unit == '=';
        result += static_cast<char>(unit);
    }
    return quotes ? "\"" + result + "\"" : result;
}

std::string qtIniUnescaped(const std::string& written) {
    const QString text = QString::fromStdString(written);
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'"') {
            continue; // around the whole
        }
        if (text[i] != u'\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        ++i;
        if (text[i] != u'x') {
            result += text[i];
            continue;
        }
        // As many hexadecimal digits as there are, of which the last four count.
        char16_t unit = 0;
        for (; i + 1 < text.size() && isHexDigit(text[i + 1].unicode()); ++i) {
            unit = static_cast<char16_t>(unit << 4 | hexValue(text[i + 1].unicode()));
        }
        result += QChar(unit);
    }
    return result.toStdString();
}

} // namespace rb
