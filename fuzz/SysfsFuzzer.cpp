#include "displays/ConnectionSnapshot.h"
#include "fuzz/Require.h"
#include "helpers/linux/cable/Snapshot.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

namespace {

namespace fs = std::filesystem;

// Of a machine with everything that the helper reads.
constexpr std::array<std::string_view, 44> attributes{
    "class/typec/port0/power_role",
    "class/typec/port0/power_operation_mode",
    "class/typec/port0-partner/accessory_mode",
    "class/typec/port0-partner/port0-partner.0/svid",
    "class/typec/port0-partner/port0-partner.0/active",
    "class/typec/port0-partner/port0-partner.0/displayport/pin_assignment",
    "class/typec/port0-partner/port0-partner.0/displayport/hpd",
    "class/typec/port0-partner/port0-partner.1/svid",
    "class/typec/port0-partner/port0-partner.1/active",
    "class/typec/port0-partner/usb_power_delivery/source-capabilities/1:fixed_supply/voltage",
    "class/typec/port0-partner/usb_power_delivery/source-capabilities/1:fixed_supply/maximum_current",
    "class/typec/port0-partner/usb_power_delivery/source-capabilities/2:variable_supply/maximum_voltage",
    "class/typec/port0-partner/usb_power_delivery/source-capabilities/2:variable_supply/maximum_current",
    "class/typec/port0-partner/usb_power_delivery/source-capabilities/3:battery/maximum_power",
    "class/typec/port0-cable/identity/id_header",
    "class/typec/port0-cable/identity/product_type_vdo1",
    "class/typec/port0/usb1-port1/device/speed",
    "class/typec/port0/usb1-port1/device/product",
    "class/typec/port0/usb1-port1/device/manufacturer",
    "class/typec/port0/usb1-port1/device/1-1.2/speed",
    "class/typec/port0/usb1-port1/device/1-1.2/product",
    "class/typec/port12/power_role",
    "class/typec/port12-partner/accessory_mode",
    "class/typec/port99999999999999999999/power_role",
    "class/power_supply/ucsi-source-psy-USBC000:001/online",
    "class/power_supply/ucsi-source-psy-USBC000:001/voltage_now",
    "class/power_supply/ucsi-source-psy-USBC000:001/current_max",
    "class/power_supply/ucsi-source-psy-USBC000:001/current_now",
    "class/power_supply/ucsi-source-psy-x/online",
    "class/power_supply/tcpm-source-psy-1/online",
    "class/power_supply/BAT0/type",
    "class/power_supply/BAT0/scope",
    "class/power_supply/BAT0/status",
    "class/drm/card1-DP-2/status",
    "class/drm/card1-DP-2/edid",
    "class/drm/card1-HDMI-A-1/status",
    "class/drm/card1-HDMI-A-1/edid",
    "bus/thunderbolt/devices/0-0/usb4_port1/connector/power_role",
    "bus/thunderbolt/devices/0-1/device_name",
    "bus/thunderbolt/devices/0-1/vendor_name",
    "bus/thunderbolt/devices/0-1/rx_speed",
    "bus/thunderbolt/devices/0-1/rx_lanes",
    "class/typec/port0-partner/port0-partner.2/svid",
    "class/typec/port0/firmware_node/path",
};

// In memory where there is such a place.
class Machine {
public:
    Machine() {
        std::error_code error;
        std::string name = (fs::is_directory("/dev/shm", error) ? "/dev/shm" : fs::temp_directory_path().string()) +
                           "/rookbay-sysfs-XXXXXX";
        root_ = ::mkdtemp(name.data());
        for (const std::string_view attribute : attributes) {
            fs::create_directories(fs::path(path(attribute)).parent_path());
        }
    }
    ~Machine() {
        std::error_code error;
        fs::remove_all(root_, error);
    }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    const std::string& root() const { return root_; }
    void put(std::string_view attribute, std::string_view text) {
        std::ofstream(path(attribute), std::ios::binary) << text;
    }
    void clear() {
        for (const std::string_view attribute : attributes) {
            std::error_code error;
            fs::remove(path(attribute), error);
        }
    }

private:
    std::string path(std::string_view attribute) const { return root_ + "/sys/" + std::string(attribute); }
    std::string root_;
};

} // namespace

// Whatever the kernel's attributes hold, the helper's answer is one that the program understands. The input is a row of
// attributes: a number, a length, the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Machine machine;
    machine.clear();
    for (std::string_view rest{reinterpret_cast<const char*>(data), size}; rest.size() >= 2;) {
        const auto attribute = static_cast<std::uint8_t>(rest[0]) % attributes.size();
        const auto length = static_cast<std::uint8_t>(rest[1]);
        rest.remove_prefix(2);
        machine.put(attributes.at(attribute), rest.substr(0, length));
        rest.remove_prefix(std::min<std::size_t>(length, rest.size()));
    }
    const auto snapshot = rb::parseSnapshot(rb::connectionSnapshot(rb::Sysfs(machine.root())));
    ROOKBAY_REQUIRE(snapshot.has_value());
    for (const rb::Port& port : snapshot->ports) {
        ROOKBAY_REQUIRE(port.name && !port.name->empty());
        const rb::PowerSource* source = rb::powerSource(port.powerSources);
        ROOKBAY_REQUIRE(!source || !source->maxPowerW || *source->maxPowerW >= 0);
    }
    return 0;
}
