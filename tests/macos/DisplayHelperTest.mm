#include "helpers/macos/DisplayHelper/DisplayCommands.h"
#include "helpers/shared/DdcCi.h"
#include "tests/helpers/EdidBlock.h"
#include "tests/macos/MacTest.h"

#import <CoreGraphics/CoreGraphics.h>
#import <IOKit/IOKitLib.h>

#include <nlohmann/json.hpp>

using namespace rb::fake;

namespace {

using Json = nlohmann::json;
using Bytes = std::vector<std::uint8_t>;

struct Monitor {
    std::string name;
    std::uint8_t serial = 0;
    std::uint8_t mode = rb::powerOn;
    bool tellsEdid = true;
    bool answers = true;
    Bytes reply = {};
    std::vector<Bytes> written = {}; // with the host's address in front
};

// The monitors behind the services, by the number of the service's entry.
std::map<unsigned, Monitor> monitors;

Monitor& monitorOf(CFTypeRef service) {
    return monitors.at([(__bridge NSNumber*)service unsignedIntValue]);
}

CFTypeRef createService(CFAllocatorRef, io_service_t entry) {
    return (__bridge_retained CFTypeRef) @(entry);
}
IOReturn copyEdid(CFTypeRef service, CFDataRef* edid) {
    const Monitor& monitor = monitorOf(service);
    if (!monitor.tellsEdid) {
        return 1;
    }
    const Bytes block = rb::edidBlock(monitor.name, monitor.serial);
    *edid = CFDataCreate(nullptr, block.data(), static_cast<CFIndex>(block.size()));
    return KERN_SUCCESS;
}
IOReturn writeI2c(CFTypeRef service, std::uint32_t device, std::uint32_t offset, void* bytes, std::uint32_t size) {
    Monitor& monitor = monitorOf(service);
    EXPECT_EQ(device, 0x37U);
    if (!monitor.answers) {
        return 1;
    }
    Bytes message{static_cast<std::uint8_t>(offset)};
    const auto* rest = static_cast<const std::uint8_t*>(bytes);
    message.insert(message.end(), rest, rest + size);
    monitor.written.push_back(message);
    if (message.size() == 7 && message[2] == 3) {
        monitor.mode = message[5];
    } else if (message == rb::featureRequest(rb::powerModeFeature)) {
        monitor.reply = {0x6E, 0x88, 2, 0, rb::powerModeFeature, 0, 0, 5, 0, monitor.mode};
        std::uint8_t sum = 0x50;
        for (const std::uint8_t byte : monitor.reply) {
            sum ^= byte;
        }
        monitor.reply.push_back(sum);
    }
    return KERN_SUCCESS;
}
IOReturn readI2c(CFTypeRef service, std::uint32_t device, std::uint32_t, void* bytes, std::uint32_t size) {
    const Monitor& monitor = monitorOf(service);
    EXPECT_EQ(device, 0x37U);
    if (!monitor.answers || monitor.reply.size() != size) {
        return 1;
    }
    std::copy(monitor.reply.begin(), monitor.reply.end(), static_cast<std::uint8_t*>(bytes));
    return KERN_SUCCESS;
}

class DisplayHelperTest : public MacTest {
protected:
    void SetUp() override {
        monitors.clear();
        displays_.clear();
        onCall("CGGetOnlineDisplayList", [this](Call& call) {
            for (std::size_t index = 0; index < displays_.size(); ++index) {
                call.pointer<CGDirectDisplayID*>(1)[index] = displays_[index].id;
            }
            *call.pointer<std::uint32_t*>(2) = static_cast<std::uint32_t>(displays_.size());
            call.answer(0);
        });
        answerFor("CGDisplayVendorNumber", [](const Display&) { return 0x10AC; });
        answerFor("CGDisplayModelNumber", [](const Display&) { return 0x41D9; });
        answerFor("CGDisplaySerialNumber", [](const Display& display) { return display.serial; });
        answerFor("CGDisplayIsBuiltin", [](const Display& display) { return display.builtin ? 1 : 0; });
    }

    void provideService() {
        provideFunction("IOAVServiceCreateWithService", reinterpret_cast<void*>(createService));
        provideFunction("IOAVServiceCopyEDID", reinterpret_cast<void*>(copyEdid));
        provideFunction("IOAVServiceReadI2C", reinterpret_cast<void*>(readI2c));
        provideFunction("IOAVServiceWriteI2C", reinterpret_cast<void*>(writeI2c));
    }

    Monitor& addService(const std::string& name, std::uint8_t serial, id location = @"External") {
        const unsigned bus = addRegistryEntry("AppleDCPExpert", "dispext" + std::to_string(monitors.size()), @{});
        NSDictionary* properties = location ? @{@"Location" : location} : @{};
        const unsigned entry = addRegistryEntry("DCPAVServiceProxy", "DCPAVServiceProxy", properties, bus);
        return monitors[entry] = {.name = name, .serial = serial};
    }
    void addDisplay(std::uint32_t id, int serial, bool builtin = false) { displays_.push_back({id, serial, builtin}); }

    static Json ask(const std::vector<std::string>& words) { return Json::parse(rb::answerDisplayCommand(words)); }
    static std::string onlyUuid() { return ask({"list"}).at(0).at("uuid"); }

private:
    struct Display {
        std::uint32_t id;
        int serial;
        bool builtin;
    };
    void answerFor(const std::string& function, int (*value)(const Display&)) {
        onCall(function, [this, value](Call& call) {
            for (const Display& display : displays_) {
                if (display.id == static_cast<std::uint32_t>(call.integer(0))) {
                    call.answer(value(display));
                }
            }
        });
    }
    std::vector<Display> displays_;
};

TEST_F(DisplayHelperTest, WithoutTheSystemsServiceNothingIsTouched) {
    addService("A", 7);
    addDisplay(1, 7);
    EXPECT_EQ(ask({"list"}), Json::array());
    for (const char* command : {"probe", "sleep", "wake"}) {
        const Json answer = ask({command, "DEL:41D9:00000007@IOService:/x"});
        EXPECT_EQ(answer.at("ok"), false);
        EXPECT_FALSE(answer.at("message").get<std::string>().empty());
    }
    EXPECT_FALSE(called("IOServiceGetMatchingServices"));
    // One function of the four is as good as none.
    provideService();
    provideFunction("IOAVServiceReadI2C", nullptr);
    EXPECT_EQ(ask({"list"}), Json::array());
}

TEST_F(DisplayHelperTest, ListsExternalDisplaysThatCanBeToldApart) {
    provideService();
    Monitor& panel = addService("Panel", 1, @"Embedded");
    Monitor& unknown = addService("Nowhere", 2, nil);
    addService("A", 7);
    addService("Twin", 8);
    addService("Twin", 8);
    addService("Mirrored", 9);
    addDisplay(11, 1, true);
    addDisplay(12, 2);
    addDisplay(13, 7);
    addDisplay(14, 8);
    addDisplay(15, 9);
    addDisplay(16, 9);
    const Json list = ask({"list"});
    ASSERT_EQ(list.size(), 1U) << list;
    EXPECT_EQ(list[0].at("id"), 13);
    EXPECT_TRUE(list[0].at("uuid").get<std::string>().starts_with("DEL:41D9:00000007@IOService:/dispext2")) << list;
    EXPECT_TRUE(panel.written.empty());
    EXPECT_TRUE(unknown.written.empty());
}

TEST_F(DisplayHelperTest, ProbesSleepsAndWakes) {
    provideService();
    Monitor& monitor = addService("A", 7);
    addService("B", 8);
    addDisplay(1, 7);
    const std::string uuid = onlyUuid();
    EXPECT_EQ(ask({"probe", uuid}).at("ok"), true);
    EXPECT_EQ(monitor.written, std::vector<Bytes>{rb::featureRequest(rb::powerModeFeature)});
    monitor.written.clear();

    const Json asleep = ask({"sleep", uuid});
    EXPECT_EQ(asleep.at("ok"), true);
    EXPECT_FALSE(asleep.contains("verified"));
    EXPECT_EQ(monitor.written, std::vector<Bytes>{rb::featureSetting(rb::powerModeFeature, rb::powerStandby)})
        << "and not read back";

    // In standby it doesn't tell who it is; its place does.
    monitor.tellsEdid = false;
    EXPECT_EQ(ask({"list"}), Json::array());
    const Json awake = ask({"wake", uuid});
    EXPECT_EQ(awake.at("ok"), true);
    EXPECT_EQ(awake.at("verified"), true);
    EXPECT_EQ(monitor.mode, rb::powerOn);
}

TEST_F(DisplayHelperTest, ANameNeverMeansAnotherDisplay) {
    provideService();
    Monitor& monitor = addService("A", 7);
    addDisplay(1, 7);
    const std::string uuid = onlyUuid();
    monitor.serial = 9; // another display in the same place
    EXPECT_EQ(ask({"sleep", uuid}).at("ok"), false);
    EXPECT_TRUE(monitor.written.empty());
    Monitor& moved = addService("A", 7);
    EXPECT_EQ(ask({"sleep", uuid}).at("ok"), true);
    EXPECT_EQ(moved.mode, rb::powerStandby);
    EXPECT_TRUE(monitors.begin()->second.written.empty());
    for (const char* bad : {"", "@", "x", "DEL:41D9:00000063@IOService:/nowhere"}) {
        EXPECT_EQ(ask({"wake", bad}).at("ok"), false) << bad;
    }
}

TEST_F(DisplayHelperTest, ASilentMonitorIsAnAnswerInTime) {
    provideService();
    Monitor& monitor = addService("A", 7);
    addDisplay(1, 7);
    const std::string uuid = onlyUuid();
    monitor.answers = false;
    EXPECT_NE(ask({"probe", uuid}).at("message").get<std::string>().find("DDC"), std::string::npos);
    EXPECT_EQ(ask({"sleep", uuid}).at("ok"), false);
    for (const std::vector<std::string>& bad :
         std::vector<std::vector<std::string>>{{}, {"list", "x"}, {"probe"}, {"off", uuid}, {"sleep", uuid, "x"}}) {
        EXPECT_EQ(rb::answerDisplayCommand(bad), "");
    }
}

} // namespace
