#include "helpers/macos/CableHelper/PortSnapshot.h"
#include "helpers/macos/CableHelper/RegistryReader.h"
#include "tests/helpers/EdidBlock.h"
#include "tests/macos/MacTest.h"

#import <IOKit/IOKitLib.h>

using namespace rb::fake;

namespace {

using Json = nlohmann::json;

NSData* words(std::uint32_t word) {
    return [NSData dataWithBytes:&word length:sizeof word];
}

class CableHelperTest : public MacTest {
protected:
    void SetUp() override { root_ = addRegistryEntry("IOPlatformExpertDevice", "J316s", @{}); }

    unsigned addPort(NSString* type, int number, NSArray* transports, NSDictionary* more = @{}) {
        NSMutableDictionary* properties = [NSMutableDictionary dictionaryWithDictionary:@{
            @"PortTypeDescription" : type,
            @"PortNumber" : @(number),
            @"TransportsActive" : transports,
            @"ConnectionActive" : @(transports.count > 0)
        }];
        [properties addEntriesFromDictionary:more];
        return addRegistryEntry("AppleHPMInterfaceType10",
                                std::string("Port-") + type.UTF8String + "@" + std::to_string(number), properties,
                                root_);
    }
    void addUsb(unsigned port, NSDictionary* properties) {
        const unsigned socket = addRegistryEntry(
            "AppleUSB20XHCIARMPort", "usb-port",
            @{@"UsbIOPort" : @(registryPath(port).c_str())}, root_);
        const unsigned hub = addRegistryEntry("IOUSBHostDevice", "device", properties, socket);
        addRegistryEntry("IOUSBHostInterface", "interface", @{}, hub);
    }
    static Json snapshot() { return Json::parse(rb::connectionSnapshot(rb::readConnectionFacts())).at("ports"); }

    unsigned root_ = 0;
};

TEST_F(CableHelperTest, AMachineThatReportsNothingHasNoPorts) {
    EXPECT_EQ(snapshot(), Json::array());
}

TEST_F(CableHelperTest, EmptyPortsAreListedInTheOrderOfTheMachine) {
    addPort(@"MagSafe 3", 1, @[]);
    addPort(@"USB-C", 2, @[]);
    addPort(@"USB-C", 1, @[]);
    addPort(@"HDMI", 1, @[]);
    std::vector<std::string> names;
    for (const Json& port : snapshot()) {
        names.push_back(port.at("name"));
        EXPECT_EQ(port, (Json{{"name", names.back()}, {"connectionActive", false}})) << "nothing is claimed of it";
    }
    EXPECT_EQ(names, (std::vector<std::string>{"USB-C 端口 1", "USB-C 端口 2", "HDMI 端口 1", "MagSafe 3 端口 1"}));
}

TEST_F(CableHelperTest, AChargerOnAMarkedCable) {
    const unsigned port = addPort(@"USB-C", 1, @[ @"CC" ]);
    const unsigned cc = addRegistryEntry("IOPortTransportStateCC", "CC", @{@"TransportTypeDescription" : @"CC"}, port);
    addRegistryEntry(
        "IOPortTransportComponentCCUSBPDSOP", "SOP",
        @{@"Metadata" : @{@"VDOs" : @[ words(0x2C0005AC), words(0), words(0), words(0) ]}}, cc);
    // A passive cable of vendor 0x2B1D: USB4 Gen 3, 5 A, 50 V, extended power.
    addRegistryEntry(
        "IOPortTransportComponentCCUSBPDSOPp", "SOP'",
        @{@"Metadata" : @{@"VDOs" : @[ words(0x18002B1D), words(0), words(0), words(0x00020643) ]}}, cc);
    const unsigned power = addRegistryEntry("IOPortFeaturePowerIn", "Power In", @{}, port);
    addRegistryEntry("IOPortFeaturePowerSource", "Brick ID", @{@"PowerSourceName" : @"Brick ID"}, power);
    addRegistryEntry(
        "IOPortFeaturePowerSource", "USB-PD", @{
            @"PowerSourceName" : @"USB-PD",
            @"PowerSourceOptions" : @[
                @{@"Voltage (mV)" : @5000,
                  @"Max Current (mA)" : @3000,
                  @"Max Power (mW)" : @15000},
                @{@"Voltage (mV)" : @20000,
                  @"Max Current (mA)" : @4700,
                  @"Max Power (mW)" : @94000}
            ],
            @"WinningPowerSourceOption" :
                @{@"Voltage (mV)" : @20000, @"Max Current (mA)" : @4700, @"Max Power (mW)" : @94000}
        },
        power);
    NSDictionary* battery = @{@"Type" : @"InternalBattery", @"Power Source State" : @"AC Power", @"Is Charging" : @NO};
    answer("IOPSCopyPowerSourcesInfo", battery);
    answer("IOPSCopyPowerSourcesList", @[ battery ]);
    answer("IOPSGetPowerSourceDescription", battery);

    const Json charged = snapshot().at(0);
    EXPECT_EQ(charged.at("cable"), (Json{{"vendorID", 0x2B1D},
                                         {"speed", "USB4 Gen 3 (40 Gbps)"},
                                         {"maxVolts", 50},
                                         {"currentRating", "5 A"},
                                         {"maxWatts", 240}}));
    ASSERT_EQ(charged.at("powerSources").size(), 1U) << "a source that offers nothing isn't one";
    EXPECT_EQ(charged.at("powerSources")[0],
              (Json{{"name", "USB-PD"},
                    {"maxPowerW", 94.0},
                    {"negotiated", {{"powerW", 94.0}, {"voltageV", 20.0}, {"currentA", 4.7}}}}));
    EXPECT_EQ(charged.at("charging").at("summary"), "Plugged in, charging on hold");
    EXPECT_FALSE(charged.contains("displays"));
    EXPECT_FALSE(charged.contains("devices"));
}

TEST_F(CableHelperTest, ADisplayAndAHubOnDifferentPorts) {
    const unsigned left = addPort(@"USB-C", 1, @[ @"CC", @"USB2", @"DisplayPort" ]);
    const auto edid = rb::edidBlock("DELL U2723QE");
    addRegistryEntry(
        "IOPortTransportStateDisplayPort", "DisplayPort", @{
            @"TransportTypeDescription" : @"DisplayPort",
            @"EDID" : [NSData dataWithBytes:edid.data() length:edid.size()],
            @"LaneCount" : @4,
            @"LinkRateDescription" : @"8.1 Gbps (HBR3)"
        },
        left);
    const unsigned right = addPort(@"USB-C", 2, @[ @"CC", @"USB2", @"USB3" ]);
    // A display that was there before, told by a transport that isn't active any more.
    addRegistryEntry(
        "IOPortTransportStateDisplayPort", "DisplayPort",
        @{@"TransportTypeDescription" : @"DisplayPort",
          @"Metadata" : @{@"ProductName" : @"Gone"}},
        right);
    addUsb(
        right,
        @{@"USB Product Name" : @"USB3.1 Hub",
          @"USB Vendor Name" : @"Dell",
          @"UsbLinkSpeed" : @10000000000});
    addUsb(
        right,
        @{@"USB Product Name" : @"Dell Keyboard",
          @"USB Vendor Name" : @"Dell",
          @"Device Speed" : @0});
    addUsb(
        right,
        @{@"Device Speed" : @99});
    const Json ports = snapshot();
    EXPECT_EQ(ports[0].at("displays"),
              Json::array({{{"monitorName", "DELL U2723QE"}, {"lanes", 4}, {"rate", "8.1 Gbps (HBR3)"}}}));
    EXPECT_FALSE(ports[0].contains("devices"));
    EXPECT_FALSE(ports[0].contains("cable")) << "a cable without a marker isn't a cable that can't";
    EXPECT_FALSE(ports[1].contains("displays"));
    EXPECT_EQ(ports[1].at("devices"), Json::array({{{"name", "Dell USB3.1 Hub"}, {"speed", "10 Gbps"}},
                                                   {{"name", "Dell Keyboard"}, {"speed", "1.5 Mbps"}},
                                                   Json::object()}));
    EXPECT_EQ(ports[1].at("transports").at("active"), (Json{"CC", "USB2", "USB3"}));
}

TEST_F(CableHelperTest, AVideoSocketSaysThatItIsOne) {
    const unsigned port = addPort(@"HDMI", 1, @[ @"DisplayPort" ]);
    addRegistryEntry(
        "IOPortTransportStateDisplayPort", "DisplayPort", @{
            @"TransportTypeDescription" : @"DisplayPort",
            @"Metadata" : @{@"ProductName" : @"客厅电视", @"BranchDeviceID" : @"MCDP29"}
        },
        port);
    const Json video = snapshot().at(0);
    EXPECT_EQ(video.at("videoOnly"), true);
    EXPECT_EQ(video.at("displays"), Json::array({{{"monitorName", "客厅电视"}, {"branchDevice", "MCDP29"}}}));
}

TEST_F(CableHelperTest, ValuesOfWrongKindsCountAsNotReported) {
    const unsigned port = addPort(
        @"USB-C", 1, @[ @"CC", @7, @"USB2" ], @{
            @"PortTypeDescription" : @[ @"USB-C" ],
            @"PortDescription" : @"Port-USB-C@1",
            @"PortNumber" : @"one",
            @"ConnectionActive" : @"yes"
        });
    for (id vdos : @[ @{}, @[], @[ @"x" ], @[ words(0) ], @[ [NSData data] ], @"x" ]) {
        addRegistryEntry(
            "IOPortTransportComponentCCUSBPDSOPp", "SOP'",
            @{@"Metadata" : @{@"VDOs" : vdos}}, port);
    }
    addRegistryEntry(
        "IOPortFeaturePowerSource", "USB-PD", @{
            @"PowerSourceName" : @"USB-PD",
            @"PowerSourceOptions" : @[ @1,
                                       @{@"Max Power (mW)" : @-5}, @{@"Max Power (mW)" : @"much"} ],
            @"WinningPowerSourceOption" : @{@"Voltage (mV)" : @0, @"Max Current (mA)" : @3000}
        },
        port);
    addRegistryEntry(
        "IOPortTransportStateDisplayPort", "DisplayPort",
        @{@"TransportTypeDescription" : @"DisplayPort",
          @"LaneCount" : @0,
          @"EDID" : @"none"},
        port);
    EXPECT_EQ(snapshot(), Json::array({{{"name", "Port-USB-C@1"},
                                        {"connectionActive", true},
                                        {"transports", {{"active", {"CC", "USB2"}}}}}}));
}

} // namespace
