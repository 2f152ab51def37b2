#include "helpers/linux/display/Commands.h"

#include "helpers/linux/shared/Answer.h"

namespace rb {

namespace {

constexpr double settlingTime = 1.0; // seconds until a woken monitor answers again

std::string explain(Exchange exchange, const Channel& channel) {
    const std::string device = "/dev/i2c-" + std::to_string(channel.bus);
    switch (exchange) {
    case Exchange::Done:
        return "显示器已响应。";
    case Exchange::NoModule:
        return "没有 " + device + "：请加载内核模块 i2c-dev（sudo modprobe i2c-dev）。";
    case Exchange::NoBus:
        return "控制通道 " + device + " 已不存在；显示器可能已断开，请按显示器电源键。";
    case Exchange::NoAccess:
        return "没有访问 " + device + " 的权限：请将用户加入 i2c 组（sudo usermod -aG i2c 用户名）后重新登录。";
    case Exchange::Busy:
        return "另一个程序正在使用 " + device + "，请稍后再试。";
    case Exchange::NoReply:
        return "显示器没有 DDC 响应；请确认显示器菜单中已开启 DDC/CI。";
    case Exchange::Garbled:
        return "显示器的 DDC 响应有误，请检查线缆或转接器。";
    case Exchange::Unsupported:
        return "显示器不支持通过 DDC 控制电源。";
    }
    return {};
}

std::string failure(Exchange exchange, const Channel& channel) {
    return Outcome(false).message(explain(exchange, channel)).text();
}

} // namespace

std::string probe(const Channel& channel, PowerBus& bus) {
    const PowerBus::Reading reading = bus.readPowerMode(channel.bus);
    if (reading.exchange != Exchange::Done) {
        return failure(reading.exchange, channel);
    }
    return Outcome(true).message(explain(Exchange::Done, channel)).text();
}

std::string sleepDisplay(const Channel& channel, PowerBus& bus) {
    const Exchange exchange = bus.writePowerMode(channel.bus, powerStandby);
    if (exchange != Exchange::Done) {
        return failure(exchange, channel);
    }
    // Asking now would wake some monitors.
    return Outcome(true).message("已发送待机命令。").text();
}

std::string wakeDisplay(const Channel& channel, PowerBus& bus) {
    const Exchange exchange = bus.writePowerMode(channel.bus, powerOn);
    if (exchange != Exchange::Done) {
        return failure(exchange, channel);
    }
    bus.pause(settlingTime);
    const PowerBus::Reading reading = bus.readPowerMode(channel.bus);
    const bool verified = reading.exchange == Exchange::Done && reading.mode == powerOn;
    return Outcome(true)
        .flag("verified", verified)
        .message(verified ? "显示器已唤醒。" : "已发送唤醒命令，尚未确认显示器亮起。")
        .text();
}

} // namespace rb
