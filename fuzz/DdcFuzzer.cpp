#include "fuzz/Require.h"
#include "helpers/shared/DdcCi.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

// A monitor that answers with the fuzzer's bytes, one reply after the other, and in no time.
class Monitor final : public rb::I2cLine {
public:
    explicit Monitor(std::string_view bytes)
        : bytes_(bytes) {}
    std::optional<rb::Exchange> write(std::span<const std::uint8_t> bytes) override {
        ROOKBAY_REQUIRE(bytes.size() == 5 && bytes[3] == rb::powerModeFeature);
        return std::nullopt;
    }
    std::optional<rb::Exchange> read(std::span<std::uint8_t> bytes) override {
        const auto length = std::min(bytes.size(), bytes_.size());
        std::copy_n(bytes_.begin(), length, bytes.begin());
        bytes_.remove_prefix(length);
        return length > 0 ? std::nullopt : std::optional(rb::Exchange::NoReply);
    }
    void pause(double seconds) override { waited += seconds; }
    std::string explainAccess(rb::Exchange /*exchange*/) const override { return {}; }

    double waited = 0;

private:
    std::string_view bytes_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes{reinterpret_cast<const char*>(data), size};
    Monitor monitor(bytes);
    const auto reading = rb::DdcPower(monitor).readPowerMode();
    ROOKBAY_REQUIRE(reading.exchange == rb::Exchange::Done || reading.mode == 0);
    ROOKBAY_REQUIRE(monitor.waited < 3);
    const auto reply = rb::parseFeatureReply({data, size}, rb::powerModeFeature);
    ROOKBAY_REQUIRE(reply.exchange != rb::Exchange::Done || size >= rb::featureReplySize);
    return 0;
}
