#include "fuzz/Require.h"
#include "helpers/shared/Edid.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

// Whatever bytes a display sends: no crash, and nothing but plain text in its names.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> bytes(data, data + size);
    if (bytes.size() >= 128) {
        // A right header and sum, so that the rest is reached.
        const std::vector<std::uint8_t> header{0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
        std::copy(header.begin(), header.end(), bytes.begin());
        unsigned sum = 0;
        for (std::size_t i = 0; i < 127; ++i) {
            sum += bytes[i];
        }
        bytes[127] = static_cast<std::uint8_t>(256 - sum % 256);
    }
    const auto edid = rb::parseEdid(bytes);
    ROOKBAY_REQUIRE(edid.has_value() == (bytes.size() >= 128));
    if (edid) {
        ROOKBAY_REQUIRE(edid->vendorLetters.size() == 3);
        for (const char c : edid->name + edid->serialText) {
            ROOKBAY_REQUIRE(c >= 0x20 && c < 0x7F);
        }
    }
    return 0;
}
