#include "fuzz/Require.h"
#include "helpers/linux/resolution/ModeChange.h"

#include <cstddef>
#include <cstdint>
#include <string>

// A record on the disk that somebody changed: refused, or an arrangement that reads back as itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto arrangement = rb::readArrangement({reinterpret_cast<const char*>(data), size});
    if (arrangement) {
        ROOKBAY_REQUIRE(rb::readArrangement(rb::writeArrangement(*arrangement)) == arrangement);
        for (const rb::RandrCrtc& crtc : arrangement->crtcs) {
            ROOKBAY_REQUIRE(crtc.id != 0 && crtc.x >= -32768 && crtc.x <= 32767);
        }
    }
    return 0;
}
