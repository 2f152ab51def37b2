#include "displays/HelperAnswer.h"

#include <limits>
#include <nlohmann/json.hpp>

namespace rb {

namespace {

using Json = nlohmann::json;

bool flag(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_boolean() && found->get<bool>();
}

std::optional<HelperAnswer::ListEntry> entryOf(const Json& json) {
    if (!json.is_object()) {
        return std::nullopt;
    }
    const auto id = json.find("id");
    const auto uuid = json.find("uuid");
    if (id == json.end() || !id->is_number() || uuid == json.end() || !uuid->is_string()) {
        return std::nullopt;
    }
    const double number = id->get<double>();
    if (!(number >= 0 && number <= std::numeric_limits<std::uint32_t>::max())) {
        return std::nullopt;
    }
    return HelperAnswer::ListEntry{.id = static_cast<std::uint32_t>(number), .uuid = uuid->get<std::string>()};
}

} // namespace

std::optional<HelperAnswer> parseHelperAnswer(std::string_view text) {
    const Json json = Json::parse(text, nullptr, false);
    HelperAnswer answer;
    if (json.is_array()) {
        answer.list.emplace();
        for (const Json& entry : json) {
            if (auto read = entryOf(entry)) {
                answer.list->push_back(*std::move(read));
            }
        }
        return answer;
    }
    if (!json.is_object()) {
        return std::nullopt;
    }
    answer.ok = flag(json, "ok");
    answer.trial = flag(json, "trial");
    answer.kept = flag(json, "kept");
    answer.verified = flag(json, "verified");
    if (const auto message = json.find("message"); message != json.end() && message->is_string()) {
        answer.message = message->get<std::string>();
    }
    return answer;
}

} // namespace rb
