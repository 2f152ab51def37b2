#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

// What the system's registry of devices tells, as plain values.
namespace rb {

struct RegistryEntry {
    std::string name = {};
    std::string className = {};
    std::string path = {};                                // of ports and USB devices
    nlohmann::json properties = nlohmann::json::object(); // data as binary
    std::vector<RegistryEntry> children = {};             // of ports
    std::optional<std::string> usbPort = std::nullopt;    // of USB devices: the path of the port they hang on
};

// What the system tells of its batteries.
struct BatteryFacts {
    bool onExternalPower = false;
    bool charging = false;
    bool charged = false;
};

struct ConnectionFacts {
    std::vector<RegistryEntry> ports = {};
    std::vector<RegistryEntry> usbDevices = {}; // hubs before what hangs on them
    std::optional<BatteryFacts> battery = std::nullopt;
};

// The names of properties and classes. Apple documents those of USB devices; those of ports are as the registry of Macs
// with Apple silicon shows them to anyone who lists it. Whatever isn't there under these names counts as not reported.
namespace RegistryName {
inline constexpr const char* PortType = "PortTypeDescription"; // "USB-C", "MagSafe 3", "HDMI"
inline constexpr const char* PortNumber = "PortNumber";
inline constexpr const char* PortDescription = "PortDescription"; // "Port-USB-C@1"
inline constexpr const char* ConnectionActive = "ConnectionActive";
inline constexpr const char* TransportsActive = "TransportsActive"; // "CC", "USB2", "USB3", "CIO", "DisplayPort"
inline constexpr const char* TransportType = "TransportTypeDescription";
inline constexpr const char* ComponentName = "ComponentName"; // "SOP" is the partner, "SOP'" the cable
inline constexpr const char* Metadata = "Metadata";
inline constexpr const char* IdentityObjects = "VDOs";            // of the answer to Discover Identity
inline constexpr const char* PowerSourceName = "PowerSourceName"; // "USB-PD"
inline constexpr const char* PowerOptions = "PowerSourceOptions";
inline constexpr const char* PowerContract = "WinningPowerSourceOption";
inline constexpr const char* Millivolts = "Voltage (mV)";
inline constexpr const char* Milliamps = "Max Current (mA)";
inline constexpr const char* Milliwatts = "Max Power (mW)";
inline constexpr const char* LaneCount = "LaneCount";
inline constexpr const char* LinkRate = "LinkRateDescription";
inline constexpr const char* Edid = "EDID";
inline constexpr const char* ProductName = "ProductName";
inline constexpr const char* BranchDevice = "BranchDeviceID";
inline constexpr const char* SinkType = "DFP Type";
inline constexpr const char* UsbPort = "UsbIOPort"; // of a USB socket: the path of its port
inline constexpr const char* UsbProduct = "USB Product Name";
inline constexpr const char* UsbVendor = "USB Vendor Name";
inline constexpr const char* UsbLinkSpeed = "UsbLinkSpeed"; // bits per second
inline constexpr const char* UsbSpeed = "Device Speed";     // 0 to 5
} // namespace RegistryName

} // namespace rb
