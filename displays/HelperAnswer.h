#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rb {

// What a helper said, as far as the protocols know it. Fields of a wrong kind count as missing.
struct HelperAnswer {
    struct ListEntry {
        std::uint32_t id = 0;
        std::string uuid = {};
    };

    bool ok = false;
    bool trial = false;
    bool kept = false;
    bool verified = false;
    std::optional<std::string> message = std::nullopt; // for the user, as it stands
    // Only for an array.
    std::optional<std::vector<ListEntry>> list = std::nullopt;
};

// Nothing when the text is neither a JSON object nor an array.
std::optional<HelperAnswer> parseHelperAnswer(std::string_view text);

} // namespace rb
