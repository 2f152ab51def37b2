#include "helpers/shared/CableIdentity.h"

#include "tests/helpers/EdidBlock.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace rb {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// A machine's sysfs, put together from the kernel's documented attributes.
class CableTest : public testing::Test {
protected:
    CableTest() {
        std::string name = (fs::temp_directory_path() / "rookbay-cable-XXXXXX").string();
        root_ = ::mkdtemp(name.data());
    }
    ~CableTest() override { fs::remove_all(root_); }

    void put(const std::string& file, const std::string& text) {
        const fs::path path = root_ / "sys/class" / file;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    void link(const std::string& from, const std::string& to) {
        const fs::path path = root_ / "sys" / from;
        fs::create_directories(path.parent_path());
        fs::create_directories(root_ / "sys" / to);
        fs::create_directory_symlink(fs::absolute(root_ / "sys" / to), path);
    }
    void port(const std::string& role = "[source] sink", const std::string& mode = "default") {
        put("typec/port0/power_role", role + "\n");
        put("typec/port0/power_operation_mode", mode + "\n");
        put("typec/port0-partner/accessory_mode", "none\n");
    }
    void displayPort(const std::string& pins) {
        port();
        put("typec/port0-partner/port0-partner.0/svid", "ff01\n");
        put("typec/port0-partner/port0-partner.0/active", "yes\n");
        put("typec/port0-partner/port0-partner.0/displayport/pin_assignment", pins + "\n");
        put("typec/port0-partner/port0-partner.0/displayport/hpd", "1\n");
        put("drm/card1-DP-2/status", "connected\n");
        const auto block = edidBlock("DELL U2723QE");
        put("drm/card1-DP-2/edid", std::string(block.begin(), block.end()));
        put("drm/card1-eDP-1/status", "connected\n");
    }
    // What the program itself says of this machine.
    Json ports() {
        const std::string command = HELPERS_FOLDER "/CableHelper --root '" + root_.string() + "'";
        FILE* pipe = ::popen(command.c_str(), "r"); // NOLINT(cert-env33-c)
        std::string output;
        std::array<char, 4096> buffer{};
        while (const std::size_t length = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
            output.append(buffer.data(), length);
        }
        EXPECT_EQ(::pclose(pipe), 0);
        return Json::parse(output).at("ports");
    }
    Json only() {
        const Json all = ports();
        EXPECT_EQ(all.size(), 1U) << all;
        return all.empty() ? Json::object() : all[0];
    }

    fs::path root_;
};

TEST_F(CableTest, AMachineWithoutPorts) {
    EXPECT_EQ(ports(), Json::array());
}

TEST_F(CableTest, AnEmptyPortIsNotActive) {
    put("typec/port0/power_role", "[source] sink");
    EXPECT_EQ(only(), (Json{{"name", "USB-C 端口 1"}, {"connectionActive", false}}));
}

TEST_F(CableTest, APlainDeviceTellsNothingOfItsCable) {
    port();
    link("class/typec/port0/usb1-port1/device", "devices/usb1/1-1");
    put("../devices/usb1/1-1/speed", "480\n");
    put("../devices/usb1/1-1/product", "Hub\n");
    put("../devices/usb1/1-1/1-1.2/speed", "10000\n");
    put("../devices/usb1/1-1/1-1.2/manufacturer", "ACME\n");
    put("../devices/usb1/1-1/1-1.2/product", "Disk\n");
    put("../devices/usb1/1-1/1-1:1.0/speed", "1\n"); // an interface
    const Json port = only();
    EXPECT_EQ(port.at("transports").at("active"), (Json{"CC", "USB2", "USB3"}));
    EXPECT_EQ(port.at("devices"),
              (Json{{{"name", "Hub"}, {"speed", "480 Mbps"}}, {{"name", "ACME Disk"}, {"speed", "10 Gbps"}}}));
    EXPECT_FALSE(port.contains("cable"));
    EXPECT_FALSE(port.contains("powerSources"));
}

TEST_F(CableTest, AChargerOffersAndAgrees) {
    port("source [sink]", "usb_power_delivery");
    put("typec/port0-partner/usb_power_delivery/source-capabilities/1:fixed_supply/voltage", "5000mV\n");
    put("typec/port0-partner/usb_power_delivery/source-capabilities/1:fixed_supply/maximum_current", "3000mA\n");
    put("typec/port0-partner/usb_power_delivery/source-capabilities/4:fixed_supply/voltage", "20000mV\n");
    put("typec/port0-partner/usb_power_delivery/source-capabilities/4:fixed_supply/maximum_current", "4800mA\n");
    put("power_supply/ucsi-source-psy-USBC000:001/online", "1");
    put("power_supply/ucsi-source-psy-USBC000:001/voltage_now", "20000000");
    put("power_supply/ucsi-source-psy-USBC000:001/current_max", "3000000");
    put("power_supply/ucsi-source-psy-USBC000:002/online", "1");
    put("power_supply/BAT0/type", "Battery");
    put("power_supply/BAT0/status", "Not charging");
    const Json port = only();
    const Json& source = port.at("powerSources").at(0);
    EXPECT_EQ(source.at("name"), "USB-PD");
    EXPECT_NEAR(source.at("maxPowerW").get<double>(), 96, 1e-6);
    EXPECT_NEAR(source.at("negotiated").at("powerW").get<double>(), 60, 1e-6);
    EXPECT_EQ(port.at("charging").at("summary"), "Plugged in, charging on hold");
}

TEST_F(CableTest, FeedingSomebodyElseIsNoSourceOfOurs) {
    port("[source] sink", "usb_power_delivery");
    put("typec/port0-partner/usb_power_delivery/sink-capabilities/1:fixed_supply/voltage", "5000mV\n");
    EXPECT_FALSE(only().contains("powerSources"));
    port("source [sink]", "1.5A");
    EXPECT_EQ(only().at("powerSources"), (Json{{{"name", "USB Type-C"}, {"maxPowerW", 7.5}}}));
}

TEST_F(CableTest, VideoOverTwoAndFourLanes) {
    displayPort("C [D] E");
    EXPECT_EQ(only().at("displays"), (Json{{{"lanes", 2}, {"monitorName", "DELL U2723QE"}}}));
    displayPort("[C] D E");
    EXPECT_EQ(only().at("displays").at(0).at("lanes"), 4);
    EXPECT_EQ(only().at("transports").at("active"), (Json{"CC", "DisplayPort"}));
    displayPort("C D E"); // none selected: not one of ours
    EXPECT_FALSE(only().at("displays").at(0).contains("lanes"));
}

TEST_F(CableTest, ADisplayIsGivenToAPortOnlyWithoutDoubt) {
    displayPort("[C]");
    put("drm/card1-DP-3/status", "connected\n");
    EXPECT_FALSE(only().at("displays").at(0).contains("monitorName")) << "which of the two?";
    link("class/drm/card1-DP-3/firmware_node", "devices/acpi/one");
    link("class/typec/port0/firmware_node", "devices/acpi/one");
    EXPECT_EQ(only().at("displays").at(0).at("monitorName"), "DP-3");
    put("drm/card1-HDMI-A-1/status", "connected\n");
    const Json all = ports();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[1], (Json{{"name", "HDMI-A-1"},
                            {"connectionActive", true},
                            {"videoOnly", true},
                            {"displays", {{{"monitorName", "HDMI-A-1"}}}}}));
}

TEST_F(CableTest, CablesWithTheirMarkers) {
    port();
    put("typec/port0-cable/identity/id_header", "0x1c00208e\n");         // passive, vendor 0x208e
    put("typec/port0-cable/identity/product_type_vdo1", "0x00000043\n"); // 5 A, 20 V, Gen 3
    fs::create_directories(root_ / "usr/share/misc");
    std::ofstream(root_ / "usr/share/misc/usb.ids") << "# list\n208d  Other\n208e  Luxshare\n\t0001  Thing\nC 00  x\n";
    EXPECT_EQ(only().at("cable"), (Json{{"vendorID", 0x208E},
                                        {"vendorName", "Luxshare"},
                                        {"speed", "USB4 Gen 3 (40 Gbps)"},
                                        {"maxVolts", 20},
                                        {"currentRating", "5 A"},
                                        {"maxWatts", 100}}));
    put("typec/port0-cable/identity/id_header", "0x2000208e\n");         // active
    put("typec/port0-cable/identity/product_type_vdo1", "0x00000054\n"); // 5 A, power through it, Gen 4
    EXPECT_EQ(only().at("cable").at("speed"), "USB4 Gen 4 (80 Gbps)");
    EXPECT_EQ(only().at("cable").at("maxWatts"), 100);
    put("typec/port0-cable/identity/product_type_vdo1", "0x00000044\n"); // optical: no power through it
    EXPECT_FALSE(only().at("cable").contains("maxWatts")) << "not reported is not a limit";
    put("typec/port0-cable/identity/id_header", "0x0\n");
    EXPECT_FALSE(only().contains("cable")) << "a marker that wasn't read";
}

TEST_F(CableTest, AThunderboltDock) {
    port();
    link("bus/thunderbolt/devices/0-0/usb4_port1/connector", "class/typec/port0");
    link("bus/thunderbolt/devices/0-0/usb4_port3/connector", "class/typec/port9");
    put("../bus/thunderbolt/devices/0-1/device_name", "TS4\n");
    put("../bus/thunderbolt/devices/0-1/vendor_name", "CalDigit\n");
    put("../bus/thunderbolt/devices/0-1/rx_speed", "20.0 Gb/s\n");
    put("../bus/thunderbolt/devices/0-1/rx_lanes", "2\n");
    put("../bus/thunderbolt/devices/0-3/device_name", "elsewhere\n");
    const Json port = ports().at(0); // the other one is there to be told apart
    EXPECT_EQ(port.at("transports").at("active"), (Json{"CC", "CIO"}));
    EXPECT_EQ(port.at("devices"), (Json{{{"name", "CalDigit TS4"}, {"speed", "20 Gbps × 2"}}}));
}

TEST_F(CableTest, BadAttributesAreLeftOut) {
    displayPort(std::string(10000, '['));
    put("typec/port0/power_role", std::string("[si\0nk]", 7));
    put("typec/port0-cable/identity/id_header", "0xzz\n");
    put("typec/portX/power_role", "[sink]");
    link("class/typec/port0/usb1-port1/device", "devices/usb1/1-1");
    put("../devices/usb1/1-1/product", "\xff\xfe bad");
    put("../devices/usb1/1-1/speed", "fast");
    fs::create_directory_symlink(fs::absolute(root_ / "sys/devices/usb1/1-1"), root_ / "sys/devices/usb1/1-1/1-1.1");
    const Json port = only(); // and the loop of links ends
    EXPECT_FALSE(port.contains("cable"));
    EXPECT_FALSE(port.contains("powerSources"));
    EXPECT_FALSE(port.at("devices").at(0).contains("speed"));
}

TEST(CableIdentityTest, ReservedValuesStayAway) {
    constexpr std::uint32_t passive = 0x18000000;
    constexpr std::uint32_t active = 0x20000000;
    EXPECT_EQ(readCableIdentity(passive | 0x5AC, 0x20).vendorID, 0x5AC);
    EXPECT_EQ(readCableIdentity(passive, 0x21).maxWatts, 60);
    EXPECT_EQ(readCableIdentity(passive, 0x21).speed, "USB 3.2 Gen 1 (5 Gbps)");
    EXPECT_FALSE(readCableIdentity(passive, 0x00).maxAmps);
    EXPECT_FALSE(readCableIdentity(passive, 0x60).maxWatts);
    EXPECT_FALSE(readCableIdentity(passive, 0x27).speed);
    EXPECT_EQ(readCableIdentity(passive, 0x20644).maxWatts, 240) << "50 V, 5 A, extended range";
    EXPECT_FALSE(readCableIdentity(active, 0x43).maxWatts) << "no power through it";
    EXPECT_EQ(readCableIdentity(active, 0x53).maxWatts, 100);
    EXPECT_FALSE(readCableIdentity(0, 0x43).speed) << "no cable";
}

} // namespace

} // namespace rb
