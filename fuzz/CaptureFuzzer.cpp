#include "desktops/linux/CaptureAttributes.h"
#include "desktops/linux/IniText.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>
#include <string>

// Attributes of captures and settings files of other programs, of any bytes: a value that was set is read back, and
// taking a new line out again leaves every byte as it was.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text{reinterpret_cast<const char*>(data), size};
    (void)rb::numbersOfPropertyList(text);
    for (const std::string group : {"", "General"}) {
        const std::string changed = rb::withIniValue(text, group, "savePath", "/ours");
        ROOKBAY_REQUIRE(rb::iniValue(changed, group, "savePath") == "/ours");
        const auto before = rb::iniValue(text, group, "savePath");
        const std::string undone = rb::withIniValue(changed, group, "savePath", before);
        ROOKBAY_REQUIRE(rb::iniValue(undone, group, "savePath") == before);
    }
    return 0;
}
