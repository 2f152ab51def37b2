#include "helpers/linux/display/Commands.h"

namespace rb {

namespace {

// One bus as the display on it.
class DisplayOnBus final : public PowerControl {
public:
    DisplayOnBus(const Channel& channel, PowerBus& bus)
        : bus_(bus)
        , number_(channel.bus) {}

    PowerReading readPowerMode() override { return bus_.readPowerMode(number_); }
    Exchange writePowerMode(std::uint8_t mode) override { return bus_.writePowerMode(number_, mode); }
    void pause(double seconds) override { bus_.pause(seconds); }
    std::string explainAccess(Exchange exchange) const override {
        const std::string device = "/dev/i2c-" + std::to_string(number_);
        return exchange == Exchange::NoBus
                   ? "没有 " + device + "：请加载内核模块 i2c-dev（sudo modprobe i2c-dev）。"
                   : "没有访问 " + device + " 的权限：请将用户加入 i2c 组（sudo usermod -aG i2c 用户名）后重新登录。";
    }

private:
    PowerBus& bus_;
    int number_;
};

} // namespace

std::string probe(const Channel& channel, PowerBus& bus) {
    DisplayOnBus display(channel, bus);
    return probe(display);
}

std::string sleepDisplay(const Channel& channel, PowerBus& bus) {
    DisplayOnBus display(channel, bus);
    return sleepDisplay(display);
}

std::string wakeDisplay(const Channel& channel, PowerBus& bus) {
    DisplayOnBus display(channel, bus);
    return wakeDisplay(display);
}

} // namespace rb
