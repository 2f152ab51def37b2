#include "desktops/linux/KeyedArchive.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

const rb::ArchiveClass itemClass{"RBClipItem",
                                 {{"kind", rb::ArchiveKind::Integer},
                                  {"text", rb::ArchiveKind::String},
                                  {"imageData", rb::ArchiveKind::Data},
                                  {"imageType", rb::ArchiveKind::String},
                                  {"paths", rb::ArchiveKind::Strings},
                                  {"date", rb::ArchiveKind::Date}}};

} // namespace

// Whatever stands in the archive, reading it ends; and what was understood is written and read back as many objects.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto decoded = rb::decodeArchive(itemClass, {reinterpret_cast<const char*>(data), size});
    ROOKBAY_REQUIRE(decoded.objects.has_value() == decoded.fault.empty());
    if (!decoded.objects) {
        return 0;
    }
    const auto encoded = rb::encodeArchive(itemClass, *decoded.objects);
    const auto again = rb::decodeArchive(itemClass, std::string_view(encoded.bytes.get(), encoded.size));
    ROOKBAY_REQUIRE(again.objects.has_value());
    // Texts with a zero in the middle can't be written.
    ROOKBAY_REQUIRE(again.objects->size() <= decoded.objects->size());
    ROOKBAY_REQUIRE(again.damaged == 0);
    return 0;
}
