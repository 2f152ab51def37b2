#include "helpers/linux/display/Channels.h"
#include "helpers/linux/display/I2cDevice.h"

#include "tests/helpers/EdidBlock.h"

#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace rb {

namespace {

namespace fs = std::filesystem;

// A monitor that can be made to fail, and keeps count of what it was asked.
class SimulatedDisplay final : public PowerControl {
public:
    PowerReading readPowerMode() override {
        log += "read ";
        return {readOutcome, mode};
    }
    Exchange writePowerMode(std::uint8_t written) override {
        log += "write=" + std::to_string(written) + " ";
        if (writeOutcome == Exchange::Done && obeys) {
            mode = written;
        }
        return writeOutcome;
    }
    void pause(double /*seconds*/) override { log += "pause "; }
    std::string explainAccess(Exchange exchange) const override {
        return exchange == Exchange::NoBus ? "no bus" : "no access";
    }

    Exchange readOutcome = Exchange::Done;
    Exchange writeOutcome = Exchange::Done;
    bool obeys = true;
    std::uint8_t mode = powerOn;
    std::string log;
};

class DisplayCommandsTest : public testing::Test {
protected:
    nlohmann::json json(const std::string& text) { return nlohmann::json::parse(text); }

    SimulatedDisplay display_;
};

TEST_F(DisplayCommandsTest, StandbyIsWrittenAndNeverReadBack) {
    EXPECT_TRUE(json(sleepDisplay(display_)).at("ok"));
    EXPECT_EQ(display_.log, "write=4 ");
    display_.log.clear();
    const auto awake = json(wakeDisplay(display_));
    EXPECT_EQ(display_.log, "write=1 pause read ");
    EXPECT_TRUE(awake.at("ok"));
    EXPECT_TRUE(awake.at("verified"));
}

TEST_F(DisplayCommandsTest, AWakeThatNobodyConfirmsIsNotVerified) {
    display_.mode = powerStandby;
    display_.obeys = false;
    EXPECT_FALSE(json(wakeDisplay(display_)).at("verified"));
    display_.obeys = true;
    for (const Exchange failure : {Exchange::NoReply, Exchange::Garbled}) {
        display_.readOutcome = failure;
        const auto answer = json(wakeDisplay(display_));
        EXPECT_TRUE(answer.at("ok"));
        EXPECT_FALSE(answer.at("verified"));
    }
}

TEST_F(DisplayCommandsTest, EveryFailureSaysWhatToDo) {
    const std::map<Exchange, std::string> words{{Exchange::NoBus, "no bus"},
                                                {Exchange::NoAccess, "no access"},
                                                {Exchange::NoReply, "DDC/CI"},
                                                {Exchange::Garbled, "线缆"},
                                                {Exchange::Unsupported, "不支持"}};
    for (const auto& [failure, word] : words) {
        display_.readOutcome = display_.writeOutcome = failure;
        for (const auto& answer : {probe(display_), sleepDisplay(display_), wakeDisplay(display_)}) {
            EXPECT_FALSE(json(answer).at("ok"));
            EXPECT_THAT(json(answer).at("message").get<std::string>(), testing::HasSubstr(word));
            EXPECT_FALSE(json(answer).contains("verified"));
        }
    }
    display_.readOutcome = Exchange::Done;
    EXPECT_TRUE(json(probe(display_)).at("ok"));
}

TEST_F(DisplayCommandsTest, ABusThatIsNotThereSaysSo) {
    I2cDevice line(999999);
    DdcPower display(line);
    const auto answer = json(probe(display));
    EXPECT_FALSE(answer.at("ok"));
    const bool module = fs::exists("/sys/class/i2c-dev");
    EXPECT_THAT(answer.at("message").get<std::string>(), testing::HasSubstr(module ? "已不存在" : "modprobe i2c-dev"));
    EXPECT_FALSE(json(sleepDisplay(display)).at("ok"));
    EXPECT_FALSE(json(wakeDisplay(display)).at("ok"));
}

class ChannelsTest : public testing::Test {
protected:
    ChannelsTest() {
        std::string name = (fs::temp_directory_path() / "rookbay-drm-XXXXXX").string();
        root_ = ::mkdtemp(name.data());
    }
    ~ChannelsTest() override { fs::remove_all(root_); }

    fs::path connector(const std::string& name, const std::vector<std::uint8_t>& edid) {
        const fs::path folder = root_ / "sys/class/drm" / name;
        fs::create_directories(folder);
        std::ofstream(folder / "edid", std::ios::binary)
            .write(reinterpret_cast<const char*>(edid.data()), static_cast<std::streamsize>(edid.size()));
        return folder;
    }

    fs::path root_;
};

TEST_F(ChannelsTest, AreFoundWithoutTouchingABus) {
    EXPECT_TRUE(readChannels(root_).empty());
    fs::create_directories(connector("card1-DP-1", edidBlock("A")) / "i2c-5");
    fs::create_symlink("../../../i2c-11", connector("card1-HDMI-A-1", edidBlock("B", 9)) / "ddc");
    fs::create_directories(connector("card1-eDP-1", edidBlock("Panel")) / "i2c-3");
    fs::create_symlink("../../../i2c-3", connector("card1-DP-4", edidBlock("Also on 3")) / "ddc");
    fs::create_directories(connector("card1-DP-2", {}) / "i2c-6");
    connector("card1-DP-3", edidBlock("C")); // no bus
    std::vector<std::string> found;
    for (const Channel& channel : readChannels(root_)) {
        found.push_back(std::to_string(channel.bus) + " " + channel.uuid);
    }
    EXPECT_THAT(found, testing::UnorderedElementsAre("5 i2c-5:DEL:41D9:0000004D", "11 i2c-11:DEL:41D9:00000009", "6 "));
}

TEST_F(ChannelsTest, ANameMeansTheDisplayThatHadIt) {
    const std::vector<Channel> channels{{.bus = 5, .uuid = "i2c-5:DEL:41D9:0000004D"},
                                        {.bus = 7},
                                        {.bus = 8},
                                        {.bus = 8, .uuid = "i2c-8:DEL:41D9:00000001"}};
    EXPECT_TRUE(channelNamed("i2c-5:DEL:41D9:0000004D", channels));
    EXPECT_FALSE(channelNamed("i2c-5:LGD:0001:00000000", channels)) << "another display is on that bus now";
    const auto asleep = channelNamed("i2c-7:DEL:41D9:0000004D", channels);
    ASSERT_TRUE(asleep) << "asleep and gone from its socket";
    EXPECT_EQ(asleep->bus, 7);
    EXPECT_FALSE(channelNamed("i2c-8:DEL:41D9:0000004D", channels)) << "one of two sockets, and the other is in use";
    EXPECT_TRUE(channelNamed("i2c-8:DEL:41D9:00000001", channels));
    EXPECT_FALSE(channelNamed("i2c-0:DEL:41D9:0000004D", channels)) << "the memory's bus, say";
    for (const char* bad : {"", "i2c-", "i2c-7", "i2c-x:A", "i2c--7:A", "i2c-7x:A", "/dev/i2c-7:A"}) {
        EXPECT_FALSE(channelNamed(bad, channels)) << bad;
    }
}

TEST_F(ChannelsTest, OutputsAreMatchedByTheirEdid) {
    RandrState state;
    state.crtcs = {{.id = 1, .mode = 9}, {.id = 2, .mode = 9}, {.id = 3, .mode = 9}, {.id = 4, .mode = 9}};
    const auto output = [](std::uint32_t id, const std::string& name, const std::vector<std::uint8_t>& edid) {
        return RandrOutput{.id = id + 100, .name = name, .crtc = id, .edidBytes = edid};
    };
    state.outputs = {output(1, "eDP-1", edidBlock("Panel", 1)), output(2, "DP-1", edidBlock("A", 2)),
                     output(3, "DP-2", edidBlock("T", 3)), output(4, "DP-3", edidBlock("T", 3))};
    const std::vector<Channel> channels{{1, edidBlock("Panel", 1), "panel"},
                                        {2, edidBlock("A", 2), "a"},
                                        {3, edidBlock("T", 3), "t"},
                                        {4, edidBlock("gone", 9), "x"}};
    const auto list = matchOutputs(state, channels);
    ASSERT_EQ(list.size(), 1U) << "no panel, no twins";
    EXPECT_EQ(list[0].output, 102U);
    EXPECT_EQ(list[0].uuid, "a");
}

} // namespace

} // namespace rb
