#include "desktops/linux/CaptureAttributes.h"
#include "desktops/linux/IniText.h"
#include "fuzz/Require.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

// Attributes of captures and settings files of other programs, of any bytes: a value that was set is read back, and
// taking a new line out again leaves every byte as it was.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text{reinterpret_cast<const char*>(data), size};
    (void)rb::numbersOfPropertyList(text);
    // A rectangle of any numbers is read back as it was written.
    if (std::array<double, 4> sides{}; size >= sizeof sides) {
        std::memcpy(sides.data(), data, sizeof sides);
        const auto read = rb::numbersOfPropertyList(rb::captureRectangle({sides[0], sides[1], sides[2], sides[3]}));
        ROOKBAY_REQUIRE(read && read->size() == sides.size());
        for (std::size_t i = 0; i < sides.size(); ++i) {
            const auto* number = (*read)[i].get<double>();
            ROOKBAY_REQUIRE(number != nullptr && (*number == sides[i] || std::isnan(sides[i])));
        }
    }
    for (const std::string group : {"", "General"}) {
        const std::string changed = rb::withIniValue(text, group, "savePath", "/ours");
        ROOKBAY_REQUIRE(rb::iniValue(changed, group, "savePath") == "/ours");
        const auto before = rb::iniValue(text, group, "savePath");
        const std::string undone = rb::withIniValue(changed, group, "savePath", before);
        ROOKBAY_REQUIRE(rb::iniValue(undone, group, "savePath") == before);
    }
    return 0;
}
