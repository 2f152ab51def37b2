#include "desktops/linux/Utf8.h"
#include "fuzz/Require.h"
#include "platform/Unicode.h"

#include <cstddef>
#include <cstdint>

// Capitals of any bytes: well-formed text stays well-formed, and capitals have no capitals of their own.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    const std::string upper = rb::uppercased(text);
    ROOKBAY_REQUIRE(!rb::isValidUtf8(text) || rb::isValidUtf8(upper));
    ROOKBAY_REQUIRE(rb::uppercased(upper) == upper);
    return 0;
}
