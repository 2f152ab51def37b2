#include "helpers/shared/PowerControl.h"

#include "helpers/shared/Answer.h"

namespace rb {

namespace {

constexpr double settlingTime = 1.0; // seconds until a woken monitor answers again

std::string explain(Exchange exchange, const PowerControl& display) {
    switch (exchange) {
    case Exchange::Done:
        return "显示器已响应。";
    case Exchange::NoBus:
    case Exchange::NoAccess:
        return display.explainAccess(exchange);
    case Exchange::NoReply:
        return "显示器没有 DDC 响应；请确认显示器菜单中已开启 DDC/CI。";
    case Exchange::Garbled:
        return "显示器的 DDC 响应有误，请检查线缆或转接器。";
    case Exchange::Unsupported:
        return "显示器不支持通过 DDC 控制电源。";
    }
    return {};
}

std::string failure(Exchange exchange, const PowerControl& display) {
    return Outcome(false).message(explain(exchange, display)).text();
}

} // namespace

std::string probe(PowerControl& display) {
    const PowerReading reading = display.readPowerMode();
    if (reading.exchange != Exchange::Done) {
        return failure(reading.exchange, display);
    }
    return Outcome(true).message(explain(Exchange::Done, display)).text();
}

std::string sleepDisplay(PowerControl& display) {
    const Exchange exchange = display.writePowerMode(powerStandby);
    if (exchange != Exchange::Done) {
        return failure(exchange, display);
    }
    // Asking now would wake some monitors.
    return Outcome(true).message("已发送待机命令。").text();
}

std::string wakeDisplay(PowerControl& display) {
    const Exchange exchange = display.writePowerMode(powerOn);
    if (exchange != Exchange::Done) {
        return failure(exchange, display);
    }
    display.pause(settlingTime);
    const PowerReading reading = display.readPowerMode();
    const bool verified = reading.exchange == Exchange::Done && reading.mode == powerOn;
    return Outcome(true)
        .flag("verified", verified)
        .message(verified ? "显示器已唤醒。" : "已发送唤醒命令，尚未确认显示器亮起。")
        .text();
}

} // namespace rb
