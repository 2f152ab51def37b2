#include "desktops/linux/DefaultsFormat.h"

#include "desktops/linux/Utf8.h"

#include <QByteArray>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <utility>
#include <vector>

namespace rb {

namespace {

using Json = nlohmann::json;

constexpr std::size_t longestQuote = 40; // bytes of the file in a message

bool isMarker(std::string_view key) {
    return key == "$data" || key == "$string" || key == "$real";
}

std::string base64(std::string_view bytes) {
    return QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size())).toBase64().toStdString();
}

// Only the canonical form: what writing would give again.
std::optional<std::string> fromBase64(const std::string& text) {
    const auto decoded = QByteArray::fromBase64Encoding(
        QByteArray::fromStdString(text), QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    std::string bytes = (*decoded).toStdString();
    return decoded && base64(bytes) == text ? std::optional(std::move(bytes)) : std::nullopt;
}

// Takes the parser's events and builds the values; each event says whether to go on.
class Reader final : public nlohmann::json_sax<Json> {
public:
    ParsedDefaults result() && {
        return {.values = error_.empty() ? std::move(result_) : std::nullopt, .error = std::move(error_)};
    }

    bool null() override { return fail("null is not a value"); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(std::int64_t value) override { return add(value); }
    bool number_unsigned(std::uint64_t value) override {
        return value <= std::uint64_t{std::numeric_limits<std::int64_t>::max()} ? add(static_cast<std::int64_t>(value))
                                                                                : outOfRange(std::to_string(value));
    }
    bool number_float(double value, const std::string& digits) override {
        // Integers that are too long for any type arrive here.
        return digits.find_first_of(".eE") != std::string::npos ? add(value) : outOfRange(digits);
    }
    bool string(std::string& value) override { return add(std::move(value)); }
    bool binary(Json::binary_t& /*value*/) override { return fail("binary data is not a value"); }

    bool start_object(std::size_t /*size*/) override { return open(PropertyDictionary()); }
    bool key(std::string& key) override {
        Container& container = open_.back();
        container.key = std::move(key);
        return !std::get<PropertyDictionary>(container.content).contains(container.key) || twice(container.key);
    }
    bool end_object() override {
        auto members = std::get<PropertyDictionary>(std::move(open_.back().content));
        open_.pop_back();
        if (open_.empty()) {
            result_ = unescaped(std::move(members));
            return result_.has_value();
        }
        if (members.size() == 1 && isMarker(members.begin()->first)) {
            return decode(members.begin()->first, members.begin()->second);
        }
        auto values = unescaped(std::move(members));
        return values && add(std::move(*values));
    }
    bool start_array(std::size_t /*size*/) override { return open(PropertyArray()); }
    bool end_array() override {
        auto elements = std::get<PropertyArray>(std::move(open_.back().content));
        open_.pop_back();
        return add(std::move(elements));
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/, const Json::exception& error) override {
        // Without the library's own "[json.exception.parse_error.101] " before it.
        const std::string text = error.what();
        const auto bracket = text.find("] ");
        return fail(bracket == std::string::npos ? text : text.substr(bracket + 2));
    }

private:
    struct Container {
        std::variant<PropertyDictionary, PropertyArray> content;
        std::string key; // of the member that comes next
    };

    bool fail(std::string reason) {
        error_ = std::move(reason);
        return false;
    }
    bool twice(const std::string& key) { return fail("the key \"" + key.substr(0, longestQuote) + "\" stands twice"); }
    bool outOfRange(const std::string& digits) {
        return fail("the number " + digits.substr(0, longestQuote) + " is out of range");
    }

    template <typename Content>
    bool open(Content content) {
        if (open_.empty() && !std::is_same_v<Content, PropertyDictionary>) {
            return fail("an object was expected");
        }
        if (open_.size() == deepestDefaults) {
            return fail("nested too deeply");
        }
        open_.push_back({std::move(content), {}});
        return true;
    }

    bool add(PropertyValue value) {
        if (open_.empty()) {
            return fail("an object was expected");
        }
        Container& container = open_.back();
        if (auto* elements = std::get_if<PropertyArray>(&container.content)) {
            elements->push_back(std::move(value));
        } else {
            std::get<PropertyDictionary>(container.content).emplace(std::move(container.key), std::move(value));
        }
        return true;
    }

    // The value that a dictionary with a single marker stands for.
    bool decode(const std::string& marker, const PropertyValue& content) {
        if (const auto* text = content.get<std::string>()) {
            const auto bytes = fromBase64(*text);
            if (marker == "$data" && bytes) {
                return add(PropertyData{{bytes->begin(), bytes->end()}});
            }
            if (marker == "$string" && bytes) {
                return add(*bytes);
            }
            if (marker == "$real" && *text == "nan") {
                return add(std::numeric_limits<double>::quiet_NaN());
            }
            if (marker == "$real" && (*text == "inf" || *text == "-inf")) {
                const double infinity = std::numeric_limits<double>::infinity();
                return add((*text)[0] == '-' ? -infinity : infinity);
            }
        }
        return fail(marker + " has no valid content");
    }

    // Takes the second "$" off the keys that were written with one.
    std::optional<PropertyDictionary> unescaped(PropertyDictionary members) {
        PropertyDictionary values;
        while (!members.empty()) {
            auto node = members.extract(members.begin());
            if (node.key().starts_with("$$")) {
                node.key().erase(0, 1);
            }
            if (const auto inserted = values.insert(std::move(node)); !inserted.inserted) {
                twice(inserted.node.key());
                return std::nullopt;
            }
        }
        return values;
    }

    std::vector<Container> open_; // from the outermost
    std::optional<PropertyDictionary> result_;
    std::string error_;
};

class Writer {
public:
    std::optional<std::string> write(const PropertyDictionary& values) {
        const Json json = value(values, 1);
        if (!possible_) {
            return std::nullopt;
        }
        constexpr int indentation = 2;
        std::string text = json.dump(indentation) + '\n';
        return text.size() <= longestDefaults ? std::optional(std::move(text)) : std::nullopt;
    }

private:
    Json value(bool content, int /*depth*/) { return content; }
    Json value(std::int64_t content, int /*depth*/) { return content; }
    Json value(double content, int depth) {
        if (!std::isfinite(content)) {
            return marked("$real", std::isnan(content) ? "nan" : content < 0 ? "-inf" : "inf", depth);
        }
        return content;
    }
    Json value(const std::string& content, int depth) {
        return isValidUtf8(content) ? Json(content) : marked("$string", base64(content), depth);
    }
    Json value(const PropertyData& content, int depth) {
        const std::string_view bytes(reinterpret_cast<const char*>(content.bytes.data()), content.bytes.size());
        return marked("$data", base64(bytes), depth);
    }
    Json value(const PropertyArray& content, int depth) {
        Json elements = Json::array();
        if (fits(depth)) {
            for (const PropertyValue& element : content) {
                elements.push_back(valueOf(element, depth + 1));
            }
        }
        return elements;
    }
    Json value(const PropertyDictionary& content, int depth) {
        Json members = Json::object();
        if (fits(depth)) {
            for (const auto& [key, member] : content) {
                possible_ = possible_ && isValidUtf8(key);
                members[key.starts_with('$') ? '$' + key : key] = valueOf(member, depth + 1);
            }
        }
        return members;
    }
    Json valueOf(const PropertyValue& any, int depth) {
        return std::visit([&](const auto& content) { return value(content, depth); }, any.storage());
    }

    Json marked(const char* marker, const std::string& content, int depth) {
        fits(depth);
        Json members = Json::object();
        members[marker] = content;
        return members;
    }
    bool fits(int depth) {
        possible_ = possible_ && depth <= deepestDefaults;
        return possible_;
    }

    bool possible_ = true;
};

} // namespace

ParsedDefaults parseDefaults(std::string_view text) {
    if (text.size() > longestDefaults) {
        return {.error = "longer than " + std::to_string(longestDefaults) + " bytes"};
    }
    if (text.find('\0') != std::string_view::npos) {
        return {.error = "a NUL byte"}; // where the library would take the text to end
    }
    Reader reader;
    Json::sax_parse(text, &reader);
    return std::move(reader).result();
}

std::optional<std::string> writeDefaults(const PropertyDictionary& values) {
    return Writer().write(values);
}

} // namespace rb
