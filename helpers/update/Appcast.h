#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rb {

// One offered package for Linux. Texts are UTF-8 as the feed has them: nothing here has been believed yet.
struct AppcastItem {
    std::string version = {};
    std::string shownVersion = {}; // what people call it; the version itself when the feed doesn't say
    std::string notes = {};        // may be HTML
    std::string url = {};          // may be relative to the feed
    std::string signature = {};    // base64; empty for an unsigned one
    std::optional<std::uint64_t> length = std::nullopt; // bytes
    // "linux", or with the processor ("linux-x86_64").
    std::string system = {};
    friend bool operator==(const AppcastItem&, const AppcastItem&) = default;
};

struct Appcast {
    std::vector<AppcastItem> items = {};
    friend bool operator==(const Appcast&, const Appcast&) = default;
};

// Reads an RSS feed of updates. Items of other systems and items without a version or an address are left out. Nothing
// for what is no such feed, has a document type of its own, or is beyond all measure; `error` then says why.
std::optional<Appcast> parseAppcast(std::string_view xml, std::string& error);

} // namespace rb
