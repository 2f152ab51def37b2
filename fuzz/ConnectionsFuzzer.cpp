#include "displays/ConnectionSnapshot.h"
#include "displays/HelperAnswer.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Whatever a helper writes, it is understood or refused, and what is understood can be shown.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    const auto snapshot = rb::parseSnapshot(text);
    const auto answer = rb::parseHelperAnswer(text);
    ROOKBAY_REQUIRE(!snapshot || answer);
    for (const rb::Port& port : snapshot ? snapshot->ports : std::vector<rb::Port>{}) {
        rb::transportLabel(port.activeTransports);
        const rb::PowerSource* source = rb::powerSource(port.powerSources);
        ROOKBAY_REQUIRE(!source || !port.powerSources.empty());
        if (port.cable) {
            ROOKBAY_REQUIRE(!rb::shortSpeed(port.cable->speed).empty());
        }
    }
    ROOKBAY_REQUIRE(!rb::shortSpeed(std::string(text)).empty());
    return 0;
}
