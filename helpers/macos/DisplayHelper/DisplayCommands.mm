#include "helpers/macos/DisplayHelper/DisplayCommands.h"

#include "helpers/macos/DisplayHelper/AvServices.h"
#include "helpers/shared/Answer.h"

#import <CoreGraphics/CoreGraphics.h>

#include <array>

namespace rb {

namespace {

std::vector<OnlineDisplay> onlineDisplays() {
    std::array<CGDirectDisplayID, 32> ids{};
    std::uint32_t count = 0;
    if (CGGetOnlineDisplayList(static_cast<std::uint32_t>(ids.size()), ids.data(), &count) != kCGErrorSuccess) {
        return {};
    }
    std::vector<OnlineDisplay> displays;
    for (std::size_t index = 0; index < count && index < ids.size(); ++index) {
        const CGDirectDisplayID id = ids.at(index);
        displays.push_back({.id = id,
                            .vendor = CGDisplayVendorNumber(id),
                            .model = CGDisplayModelNumber(id),
                            .serial = CGDisplaySerialNumber(id),
                            .builtin = CGDisplayIsBuiltin(id) != 0});
    }
    return displays;
}

std::vector<DisplayChannel> channelsOf(const std::vector<AvEntry>& entries) {
    std::vector<DisplayChannel> channels;
    channels.reserve(entries.size());
    for (const AvEntry& entry : entries) {
        channels.push_back(entry.channel);
    }
    return channels;
}

std::string list(const AvFunctions& functions) {
    std::string json;
    for (const NamedDisplay& display : matchDisplays(onlineDisplays(), channelsOf(externalServices(functions)))) {
        json += (json.empty() ? "" : ",");
        json += R"({"id":)" + std::to_string(display.id) + R"(,"uuid":)" + quoted(display.uuid) + "}";
    }
    return "[" + json + "]";
}

std::string refusal(const char* message) {
    return Outcome(false).message(message).text();
}

} // namespace

std::string answerDisplayCommand(const std::vector<std::string>& arguments) {
    const AvFunctions functions = AvFunctions::lookUp();
    if (arguments.size() == 1 && arguments[0] == "list") {
        return list(functions);
    }
    using Command = std::string (*)(PowerControl&);
    const auto command = [&]() -> Command {
        const std::string& word = arguments.empty() ? std::string() : arguments[0];
        return word == "probe" ? probe : word == "sleep" ? sleepDisplay : word == "wake" ? wakeDisplay : nullptr;
    }();
    if (arguments.size() != 2 || command == nullptr) {
        return {};
    }
    if (!functions.complete()) {
        return refusal("系统未提供单块显示器的控制通道；全部熄屏仍可使用。");
    }
    const std::vector<AvEntry> entries = externalServices(functions);
    const auto index = channelNamed(arguments[1], channelsOf(entries));
    if (!index) {
        return refusal("找不到这个控制通道；显示器可能已断开或更换。");
    }
    AvService service(functions, entries.at(*index).entry);
    DdcPower display(service);
    return command(display);
}

} // namespace rb
