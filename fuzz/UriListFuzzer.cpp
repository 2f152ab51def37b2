#include "desktops/linux/UriList.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>

// What other programs drop and copy: only absolute paths without a zero come out, and they survive being written anew.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view list{reinterpret_cast<const char*>(data), size};
    for (const std::string& path : rb::localFilesOf(list)) {
        ROOKBAY_REQUIRE(path.starts_with('/') && path.find('\0') == std::string::npos);
        const auto again = rb::localFilesOf(rb::fileUri(path));
        ROOKBAY_REQUIRE(again.size() == 1 && again.front() == path);
    }
    return 0;
}
