#include "fuzz/Require.h"
#include "helpers/update/Appcast.h"
#include "helpers/update/Versions.h"

#include <cstddef>
#include <cstdint>
#include <string>

// Whatever a server sends as a feed, reading it ends; what comes out has what the check relies on, and its versions can
// be put in an order that agrees with itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string error;
    const auto appcast = rb::parseAppcast({reinterpret_cast<const char*>(data), size}, error);
    ROOKBAY_REQUIRE(appcast.has_value() == error.empty());
    if (!appcast) {
        return 0;
    }
    const rb::AppcastItem* before = nullptr;
    for (const rb::AppcastItem& item : appcast->items) {
        ROOKBAY_REQUIRE(!item.version.empty() && !item.url.empty() && !item.shownVersion.empty());
        ROOKBAY_REQUIRE(item.system.starts_with("linux"));
        ROOKBAY_REQUIRE(!item.length || *item.length > 0);
        ROOKBAY_REQUIRE(rb::compareVersions(item.version, item.version) == 0);
        if (before != nullptr) {
            const auto there = rb::compareVersions(before->version, item.version);
            const auto back = rb::compareVersions(item.version, before->version);
            ROOKBAY_REQUIRE((there < 0) == (back > 0) && (there == 0) == (back == 0));
        }
        if (rb::isVersion(item.version)) {
            ROOKBAY_REQUIRE(item.version.find_first_of("/\\ \n%") == std::string::npos);
        }
        before = &item;
    }
    return 0;
}
