#include "desktops/linux/DefaultsFormat.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>

// Whatever stands in the settings file, reading it ends; and what was understood is written and read back the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const rb::ParsedDefaults parsed = rb::parseDefaults({reinterpret_cast<const char*>(data), size});
    ROOKBAY_REQUIRE(parsed.values.has_value() == parsed.error.empty());
    if (!parsed.values) {
        return 0;
    }
    const auto written = rb::writeDefaults(*parsed.values);
    ROOKBAY_REQUIRE(written.has_value());
    const rb::ParsedDefaults again = rb::parseDefaults(*written);
    ROOKBAY_REQUIRE(again.values.has_value());
    // By their texts: a value that isn't a number doesn't equal itself.
    ROOKBAY_REQUIRE(rb::writeDefaults(*again.values) == written);
    return 0;
}
