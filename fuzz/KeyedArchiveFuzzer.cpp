#include "desktops/linux/KeyedArchive.h"
#include "fuzz/Require.h"
#include "tests/linux/MemoryStore.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

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
    const std::string file(reinterpret_cast<const char*>(data), size);
    const auto decoded = rb::decodeArchive(itemClass, std::make_shared<const rb::MemoryStore>(file));
    ROOKBAY_REQUIRE(decoded.objects.has_value() == decoded.fault.empty());
    if (!decoded.objects) {
        return 0;
    }
    const auto encoded = rb::encodeArchive(itemClass, *decoded.objects);
    std::string written;
    for (std::size_t index = 0; index < encoded.texts.size(); ++index) {
        written += encoded.texts[index];
        if (index < encoded.data.size()) {
            const auto bytes = encoded.data[index]->bytes();
            ROOKBAY_REQUIRE(bytes != nullptr);
            written.append(bytes->begin(), bytes->end());
        }
    }
    const auto again = rb::decodeArchive(itemClass, std::make_shared<const rb::MemoryStore>(written));
    ROOKBAY_REQUIRE(again.objects.has_value());
    // Texts with a zero in the middle can't be written.
    ROOKBAY_REQUIRE(again.objects->size() <= decoded.objects->size());
    ROOKBAY_REQUIRE(again.damaged == 0);
    return 0;
}
