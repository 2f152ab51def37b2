#include "desktops/linux/DefaultsFormat.h"

#include "desktops/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>

namespace rb {

namespace {

constexpr std::string_view base64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::size_t longestQuote = 40; // of the file in a message

bool isMarker(std::string_view key) {
    return key == "$data" || key == "$string" || key == "$real";
}

template <typename Bytes>
std::string base64(const Bytes& bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t start = 0; start < bytes.size(); start += 3) {
        std::uint32_t group = 0;
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - start);
        for (std::size_t offset = 0; offset < 3; ++offset) {
            group = group << 8U | (offset < count ? static_cast<std::uint8_t>(bytes[start + offset]) : 0U);
        }
        for (std::size_t digit = 0; digit < 4; ++digit) {
            text += digit <= count ? base64Digits[group >> (18 - 6 * digit) & 0x3FU] : '=';
        }
    }
    return text;
}

// Only the canonical form: no line breaks, padded, unused bits zero.
std::optional<std::vector<std::uint8_t>> fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t start = 0; start < text.size(); start += 4) {
        std::size_t digits = 4;
        while (digits > 2 && start + 4 == text.size() && text[start + digits - 1] == '=') {
            --digits;
        }
        std::uint32_t group = 0;
        for (std::size_t digit = 0; digit < 4; ++digit) {
            const std::size_t value = digit < digits ? base64Digits.find(text[start + digit]) : 0;
            if (value == std::string_view::npos) {
                return std::nullopt;
            }
            group = group << 6U | static_cast<std::uint32_t>(value);
        }
        for (std::size_t byte = 0; byte < 3; ++byte) {
            const auto value = static_cast<std::uint8_t>(group >> (16 - 8 * byte) & 0xFFU);
            if (byte + 1 < digits) {
                bytes.push_back(value);
            } else if (value != 0) {
                return std::nullopt;
            }
        }
    }
    return bytes;
}

class Parser {
public:
    explicit Parser(std::string_view text)
        : text_(text) {}

    ParsedDefaults parse() {
        if (text_.size() > longestDefaults) {
            return {.error = "longer than " + std::to_string(longestDefaults) + " bytes"};
        }
        skipSpace();
        if (peek() != '{') {
            fail("an object was expected");
            return {.error = error_};
        }
        auto members = dictionary(1);
        auto values = members ? unescaped(std::move(*members)) : std::nullopt;
        skipSpace();
        if (values && position_ != text_.size()) {
            fail("text after the end");
            values.reset();
        }
        return {.values = std::move(values), .error = error_};
    }

private:
    // The first reason counts. Always false.
    bool fail(const std::string& reason) {
        if (error_.empty()) {
            std::size_t line = 1;
            for (std::size_t index = 0; index < std::min(position_, text_.size()); ++index) {
                line += text_[index] == '\n' ? 1 : 0;
            }
            error_ = "line " + std::to_string(line) + ": " + reason;
        }
        return false;
    }

    // NUL at the end; a NUL in the text is no valid token anyway.
    char peek() const { return position_ < text_.size() ? text_[position_] : '\0'; }
    bool take(char wanted) {
        if (position_ < text_.size() && text_[position_] == wanted) {
            ++position_;
            return true;
        }
        return false;
    }
    bool take(std::string_view word) {
        if (text_.substr(position_, word.size()) != word) {
            return false;
        }
        position_ += word.size();
        return true;
    }
    void skipSpace() {
        while (position_ < text_.size() &&
               std::string_view(" \t\r\n").find(text_[position_]) != std::string_view::npos) {
            ++position_;
        }
    }

    std::optional<PropertyValue> value(int depth) {
        skipSpace();
        switch (peek()) {
        case '{': {
            auto members = dictionary(depth);
            return members ? decode(std::move(*members)) : std::nullopt;
        }
        case '[':
            return array(depth);
        case '"': {
            auto text = string();
            return text ? std::optional<PropertyValue>(std::move(*text)) : std::nullopt;
        }
        case 't':
        case 'f':
            if (take("true")) {
                return PropertyValue(true);
            }
            if (take("false")) {
                return PropertyValue(false);
            }
            break;
        default:
            if (peek() == '-' || isDigit(peek())) {
                return number();
            }
        }
        fail("a value was expected");
        return std::nullopt;
    }

    std::optional<PropertyDictionary> dictionary(int depth) {
        if (depth > deepestDefaults) {
            fail("nested too deeply");
            return std::nullopt;
        }
        take('{');
        PropertyDictionary members;
        skipSpace();
        if (take('}')) {
            return members;
        }
        do {
            skipSpace();
            auto key = string();
            skipSpace();
            if (!key || !(take(':') || fail("a colon was expected"))) {
                return std::nullopt;
            }
            auto member = value(depth + 1);
            if (!member) {
                return std::nullopt;
            }
            if (members.contains(*key)) {
                fail("the key \"" + key->substr(0, longestQuote) + "\" stands twice");
                return std::nullopt;
            }
            members.emplace(std::move(*key), std::move(*member));
            skipSpace();
        } while (take(','));
        if (!take('}')) {
            fail("a comma or the object's end was expected");
            return std::nullopt;
        }
        return members;
    }

    std::optional<PropertyValue> array(int depth) {
        if (depth > deepestDefaults) {
            fail("nested too deeply");
            return std::nullopt;
        }
        take('[');
        PropertyArray elements;
        skipSpace();
        if (take(']')) {
            return PropertyValue(std::move(elements));
        }
        do {
            auto element = value(depth + 1);
            if (!element) {
                return std::nullopt;
            }
            elements.push_back(std::move(*element));
            skipSpace();
        } while (take(','));
        if (!take(']')) {
            fail("a comma or the array's end was expected");
            return std::nullopt;
        }
        return PropertyValue(std::move(elements));
    }

    // A dictionary as it was read: the value that a single marker stands for, or a dictionary.
    std::optional<PropertyValue> decode(PropertyDictionary members) {
        if (members.size() != 1 || !isMarker(members.begin()->first)) {
            auto values = unescaped(std::move(members));
            return values ? std::optional<PropertyValue>(std::move(*values)) : std::nullopt;
        }
        const std::string& marker = members.begin()->first;
        if (const auto* text = members.begin()->second.get<std::string>()) {
            const auto bytes = fromBase64(*text);
            if (marker == "$data" && bytes) {
                return PropertyValue(PropertyData{*bytes});
            }
            if (marker == "$string" && bytes) {
                return PropertyValue(std::string(bytes->begin(), bytes->end()));
            }
            if (marker == "$real" && *text == "nan") {
                return PropertyValue(std::numeric_limits<double>::quiet_NaN());
            }
            if (marker == "$real" && (*text == "inf" || *text == "-inf")) {
                const double infinity = std::numeric_limits<double>::infinity();
                return PropertyValue((*text)[0] == '-' ? -infinity : infinity);
            }
        }
        fail(marker + " has no valid content");
        return std::nullopt;
    }

    // Takes the second "$" off the keys that were written with one.
    std::optional<PropertyDictionary> unescaped(PropertyDictionary members) {
        PropertyDictionary values;
        while (!members.empty()) {
            auto node = members.extract(members.begin());
            if (node.key().starts_with("$$")) {
                node.key().erase(0, 1);
            }
            if (const auto result = values.insert(std::move(node)); !result.inserted) {
                fail("the key \"" + result.node.key().substr(0, longestQuote) + "\" stands twice");
                return std::nullopt;
            }
        }
        return values;
    }

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }
    bool digits() {
        const std::size_t start = position_;
        while (isDigit(peek())) {
            ++position_;
        }
        return position_ > start || fail("a digit was expected");
    }

    std::optional<PropertyValue> number() {
        const std::size_t start = position_;
        take('-');
        if (!take('0') && !digits()) {
            return std::nullopt;
        }
        bool isReal = false;
        if (take('.')) {
            isReal = true;
            if (!digits()) {
                return std::nullopt;
            }
        }
        if (take('e') || take('E')) {
            isReal = true;
            if (!take('+')) {
                take('-');
            }
            if (!digits()) {
                return std::nullopt;
            }
        }
        const std::string_view token = text_.substr(start, position_ - start);
        if (!isReal) {
            std::int64_t integer = 0;
            const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), integer);
            if (error == std::errc() && end == token.data() + token.size()) {
                return PropertyValue(integer);
            }
        } else {
            // A stream with the classic locale: the session's locale may write a decimal comma.
            std::istringstream stream{std::string(token)};
            stream.imbue(std::locale::classic());
            double real = 0;
            if (stream >> real && std::isfinite(real)) {
                return PropertyValue(real);
            }
        }
        fail("the number " + std::string(token.substr(0, longestQuote)) + " is out of range");
        return std::nullopt;
    }

    std::optional<std::string> string() {
        if (!take('"')) {
            fail("a string was expected");
            return std::nullopt;
        }
        std::string result;
        while (position_ < text_.size()) {
            const char c = text_[position_];
            if (take('"')) {
                return result;
            }
            if (c == '\\') {
                ++position_;
                if (!escape(result)) {
                    return std::nullopt;
                }
                continue;
            }
            const std::size_t length = utf8SequenceLength(text_, position_);
            if (length == 0 || static_cast<std::uint8_t>(c) < 0x20) {
                fail(length == 0 ? "malformed UTF-8" : "a control character in a string");
                return std::nullopt;
            }
            result += text_.substr(position_, length);
            position_ += length;
        }
        fail("a string without end");
        return std::nullopt;
    }

    bool escape(std::string& result) {
        constexpr std::string_view names = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        const std::size_t index = position_ < text_.size() ? names.find(text_[position_]) : std::string_view::npos;
        if (index != std::string_view::npos) {
            ++position_;
            result += meanings[index];
            return true;
        }
        std::uint32_t code = 0;
        if (!unicodeEscape(code)) {
            return false;
        }
        if (code >= 0xD800 && code <= 0xDBFF) {
            std::uint32_t low = 0;
            if (!take('\\') || !unicodeEscape(low) || low < 0xDC00 || low > 0xDFFF) {
                return fail("half a surrogate pair");
            }
            code = 0x10000 + ((code - 0xD800) << 10U) + (low - 0xDC00);
        } else if (code >= 0xDC00 && code <= 0xDFFF) {
            return fail("half a surrogate pair");
        }
        appendUtf8(result, code);
        return true;
    }

    bool unicodeEscape(std::uint32_t& code) {
        if (!take('u') || position_ + 4 > text_.size()) {
            return fail("an unknown escape");
        }
        const char* start = text_.data() + position_;
        const auto [end, error] = std::from_chars(start, start + 4, code, 16);
        if (error != std::errc() || end != start + 4) {
            return fail("an unknown escape");
        }
        position_ += 4;
        return true;
    }

    static void appendUtf8(std::string& result, std::uint32_t code) {
        const auto byte = [&](std::uint32_t bits) { result += static_cast<char>(bits); };
        if (code < 0x80) {
            byte(code);
        } else if (code < 0x800) {
            byte(0xC0 | code >> 6U);
            byte(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            byte(0xE0 | code >> 12U);
            byte(0x80 | (code >> 6U & 0x3F));
            byte(0x80 | (code & 0x3F));
        } else {
            byte(0xF0 | code >> 18U);
            byte(0x80 | (code >> 12U & 0x3F));
            byte(0x80 | (code >> 6U & 0x3F));
            byte(0x80 | (code & 0x3F));
        }
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::string error_;
};

class Writer {
public:
    std::optional<std::string> write(const PropertyDictionary& values) {
        dictionary(values, 1);
        text_ += '\n';
        return possible_ && text_.size() <= longestDefaults ? std::optional(std::move(text_)) : std::nullopt;
    }

private:
    void lineBreak(int depth) {
        text_ += '\n';
        text_.append(static_cast<std::size_t>(depth) * 2, ' ');
    }

    void value(const PropertyValue& value, int depth) {
        std::visit([&](const auto& content) { write(content, depth); }, value.storage());
    }
    void write(bool content, int) { text_ += content ? "true" : "false"; }
    void write(std::int64_t content, int) { text_ += std::to_string(content); }
    void write(double content, int depth) {
        if (!std::isfinite(content)) {
            marked("$real", std::isnan(content) ? "nan" : content < 0 ? "-inf" : "inf", depth);
            return;
        }
        std::array<char, 32> buffer{}; // the shortest exact form takes at most 24 characters
        const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), content);
        const std::string_view digits(buffer.data(), static_cast<std::size_t>(result.ptr - buffer.data()));
        text_ += digits;
        if (digits.find_first_of(".e") == std::string_view::npos) {
            text_ += ".0"; // stays a real when it is read
        }
    }
    void write(const std::string& content, int depth) {
        if (isValidUtf8(content)) {
            string(content);
        } else {
            marked("$string", base64(content), depth);
        }
    }
    void write(const PropertyData& content, int depth) { marked("$data", base64(content.bytes), depth); }
    void write(const PropertyArray& content, int depth) {
        possible_ = possible_ && depth <= deepestDefaults;
        if (content.empty() || !possible_) {
            text_ += "[]";
            return;
        }
        char separator = '[';
        for (const PropertyValue& element : content) {
            text_ += separator;
            separator = ',';
            lineBreak(depth);
            value(element, depth + 1);
        }
        lineBreak(depth - 1);
        text_ += ']';
    }
    void write(const PropertyDictionary& content, int depth) { dictionary(content, depth); }

    void dictionary(const PropertyDictionary& content, int depth) {
        possible_ = possible_ && depth <= deepestDefaults;
        if (content.empty() || !possible_) {
            text_ += "{}";
            return;
        }
        char separator = '{';
        for (const auto& [key, member] : content) {
            possible_ = possible_ && isValidUtf8(key);
            text_ += separator;
            separator = ',';
            lineBreak(depth);
            string(key.starts_with('$') ? '$' + key : key);
            text_ += ": ";
            value(member, depth + 1);
        }
        lineBreak(depth - 1);
        text_ += '}';
    }

    void marked(std::string_view marker, const std::string& content, int depth) {
        possible_ = possible_ && depth <= deepestDefaults;
        text_ += "{\"";
        text_ += marker;
        text_ += "\": ";
        string(content);
        text_ += '}';
    }

    void string(const std::string& content) {
        constexpr std::string_view digits = "0123456789abcdef";
        text_ += '"';
        for (const char c : content) {
            const auto byte = static_cast<std::uint8_t>(c);
            if (c == '"' || c == '\\') {
                text_ += '\\';
                text_ += c;
            } else if (c == '\n') {
                text_ += "\\n";
            } else if (byte < 0x20 || byte == 0x7F) {
                text_ += "\\u00";
                text_ += digits[byte >> 4U];
                text_ += digits[byte & 0xFU];
            } else {
                text_ += c;
            }
        }
        text_ += '"';
    }

    std::string text_;
    bool possible_ = true;
};

} // namespace

ParsedDefaults parseDefaults(std::string_view text) {
    return Parser(text).parse();
}

std::optional<std::string> writeDefaults(const PropertyDictionary& values) {
    return Writer().write(values);
}

} // namespace rb
