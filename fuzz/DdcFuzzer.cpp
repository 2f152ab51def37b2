#include "fuzz/Require.h"
#include "helpers/linux/display/DdcBus.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace {

// A monitor that answers with the fuzzer's bytes, one reply after the other, and in no time.
class Monitor final : public rb::I2cBuses {
public:
    explicit Monitor(std::string_view bytes)
        : bytes_(bytes) {}
    Opened open(int /*bus*/) override { return {std::make_unique<Bus>(*this), rb::Exchange::Done}; }
    void pause(double seconds) override { time_ += seconds; }
    double now() override { return time_; }

private:
    class Bus final : public rb::I2cBus {
    public:
        explicit Bus(Monitor& monitor)
            : monitor_(monitor) {}
        bool write(std::span<const std::uint8_t> bytes) override {
            ROOKBAY_REQUIRE(bytes.size() == 5 && bytes[3] == 0xD6);
            return true;
        }
        bool read(std::span<std::uint8_t> bytes) override {
            const auto length = std::min(bytes.size(), monitor_.bytes_.size());
            std::copy_n(monitor_.bytes_.begin(), length, bytes.begin());
            monitor_.bytes_.remove_prefix(length);
            return length > 0;
        }

    private:
        Monitor& monitor_;
    };

    std::string_view bytes_;
    double time_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Monitor monitor({reinterpret_cast<const char*>(data), size});
    rb::DdcBus bus(monitor);
    const auto reading = bus.readPowerMode(1);
    ROOKBAY_REQUIRE(reading.exchange == rb::Exchange::Done || reading.mode == 0);
    ROOKBAY_REQUIRE(monitor.now() < 3);
    return 0;
}
