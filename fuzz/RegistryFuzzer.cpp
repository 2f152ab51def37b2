#include "displays/ConnectionSnapshot.h"
#include "fuzz/Require.h"
#include "helpers/macos/CableHelper/PortSnapshot.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

using rb::RegistryEntry;
using Json = nlohmann::json;

// Values and trees of any shape under the names that are read.
class Registry {
public:
    Registry(const std::uint8_t* data, std::size_t size)
        : next_(data)
        , end_(data + size) {}

    bool empty() const { return next_ == end_; }

    RegistryEntry entry(int depth) {
        RegistryEntry made{.name = string()};
        made.path = "/" + made.name;
        for (unsigned count = byte() % 8U; count > 0; --count) {
            made.properties[key()] = value(3);
        }
        if (byte() % 4 == 0) {
            made.usbPort = "/" + string();
        }
        for (unsigned count = depth > 0 ? byte() % 4U : 0; count > 0; --count) {
            made.children.push_back(entry(depth - 1));
        }
        return made;
    }

private:
    std::uint8_t byte() { return next_ == end_ ? std::uint8_t{0} : *next_++; }

    std::string string() {
        constexpr std::array words{"SOP'", "SOP", "USB-PD", "DisplayPort", "HDMI", "USB-C", "CC", "USB2"};
        const std::uint8_t choice = byte();
        if (choice < words.size()) {
            return words.at(choice);
        }
        std::string text;
        for (unsigned count = choice % 16U; count > 0; --count) {
            text += static_cast<char>(byte());
        }
        return text;
    }

    std::string key() {
        namespace Name = rb::RegistryName;
        constexpr std::array keys{Name::PortType,         Name::PortNumber,       Name::PortDescription,
                                  Name::ConnectionActive, Name::Metadata,         Name::IdentityObjects,
                                  Name::PowerSourceName,  Name::PowerOptions,     Name::PowerContract,
                                  Name::Millivolts,       Name::Milliamps,        Name::Milliwatts,
                                  Name::LaneCount,        Name::LinkRate,         Name::Edid,
                                  Name::ProductName,      Name::BranchDevice,     Name::SinkType,
                                  Name::UsbProduct,       Name::UsbVendor,        Name::UsbLinkSpeed,
                                  Name::UsbSpeed,         Name::TransportsActive, Name::TransportType,
                                  Name::ComponentName};
        return keys.at(byte() % keys.size());
    }

    Json value(int depth) {
        switch (byte() % (depth > 0 ? 8 : 6)) {
        case 0:
            return string();
        case 1:
            return byte() % 2 == 0;
        case 2:
            return static_cast<std::int64_t>(byte()) - 64;
        case 3:
            return std::ldexp(static_cast<double>(byte()) - 64, byte() * 8 - 1000); // also infinite
        case 4: {
            std::vector<std::uint8_t> bytes(byte() % 8U);
            for (std::uint8_t& each : bytes) {
                each = byte();
            }
            return Json::binary(bytes);
        }
        case 5:
            return nullptr;
        case 6: {
            Json array = Json::array();
            for (unsigned count = byte() % 6U; count > 0; --count) {
                array.push_back(value(depth - 1));
            }
            return array;
        }
        default: {
            Json object = Json::object();
            for (unsigned count = byte() % 6U; count > 0; --count) {
                object[key()] = value(depth - 1);
            }
            return object;
        }
        }
    }

    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

} // namespace

// Whatever the registry holds: a snapshot that the program understands, with every port and nothing impossible in it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Registry registry(data, size);
    rb::ConnectionFacts facts;
    while (!registry.empty() && facts.ports.size() < 8) {
        facts.ports.push_back(registry.entry(3));
        facts.usbDevices.push_back(registry.entry(0));
    }
    facts.battery = rb::BatteryFacts{.onExternalPower = true};
    const auto snapshot = rb::parseSnapshot(rb::connectionSnapshot(facts));
    ROOKBAY_REQUIRE(snapshot.has_value() && !snapshot->error);
    ROOKBAY_REQUIRE(snapshot->ports.size() == facts.ports.size());
    for (const rb::Port& port : snapshot->ports) {
        for (const rb::PowerSource& source : port.powerSources) {
            ROOKBAY_REQUIRE(!source.maxPowerW || *source.maxPowerW > 0);
            ROOKBAY_REQUIRE(!source.negotiated || source.negotiated->voltageV >= 0);
        }
        for (const rb::DisplayLink& link : port.displays) {
            ROOKBAY_REQUIRE(!link.lanes || (*link.lanes >= 1 && *link.lanes <= 4));
        }
    }
    return 0;
}
