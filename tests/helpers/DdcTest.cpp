#include "helpers/shared/DdcCi.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numeric>

namespace rb {

namespace {

using Bytes = std::vector<std::uint8_t>;

// A monitor on the other end of the line, which answers as the standard says unless it is made to fail.
class SimulatedMonitor final : public I2cLine {
public:
    std::optional<Exchange> write(std::span<const std::uint8_t> bytes) override {
        ++writes;
        if (deaf) {
            return Exchange::NoReply;
        }
        const Bytes received(bytes.begin(), bytes.end());
        EXPECT_EQ(std::accumulate(received.begin(), received.end(), 0x6E, std::bit_xor<int>()), 0) << "checksum";
        answer.clear();
        if (received.size() == 5 && received[2] == 0x01) {
            answer = reply(received[3]);
        } else if (received.size() == 7 && received[2] == 0x03 && received[3] == powerModeFeature) {
            mode = received[5];
            settings.push_back(mode);
        }
        return std::nullopt;
    }
    std::optional<Exchange> read(std::span<std::uint8_t> bytes) override {
        ++reads;
        if (deaf) {
            return Exchange::NoReply;
        }
        if (nullsLeft > 0) {
            --nullsLeft;
            answer = {0x6E, 0x80, 0xBE};
        } else if (garbledLeft > 0) {
            --garbledLeft;
            answer.at(9) ^= 0x10U;
        }
        std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
        std::copy_n(answer.begin(), std::min(answer.size(), bytes.size()), bytes.begin());
        return std::nullopt;
    }
    void pause(double seconds) override { waited += seconds; }
    std::string explainAccess(Exchange /*exchange*/) const override { return "denied"; }

    Bytes reply(std::uint8_t feature) const {
        Bytes bytes{0x6E, 0x88, 0x02, knowsPower ? std::uint8_t{0} : std::uint8_t{1}, feature, 0, 0, 5, 0, mode};
        bytes.push_back(std::accumulate(bytes.begin(), bytes.end(), std::uint8_t{0x50}, std::bit_xor<std::uint8_t>()));
        return bytes;
    }

    bool deaf = false;
    bool knowsPower = true;
    int nullsLeft = 0;
    int garbledLeft = 0;
    std::uint8_t mode = powerOn;
    Bytes settings = {};
    Bytes answer = {};
    int writes = 0;
    int reads = 0;
    double waited = 0;
};

TEST(DdcMessageTest, AreBuiltAsTheStandardSays) {
    EXPECT_EQ(featureRequest(0x10), (Bytes{0x51, 0x82, 0x01, 0x10, 0xAC})) << "the standard's own example";
    EXPECT_EQ(featureSetting(0x10, 0x0132), (Bytes{0x51, 0x84, 0x03, 0x10, 0x01, 0x32, 0x9B}));
}

TEST(DdcMessageTest, EveryChangedBitOfAReplyIsNoticed) {
    SimulatedMonitor monitor;
    monitor.mode = powerStandby;
    const Bytes good = monitor.reply(powerModeFeature);
    EXPECT_EQ(parseFeatureReply(good, powerModeFeature).exchange, Exchange::Done);
    EXPECT_EQ(parseFeatureReply(good, powerModeFeature).value, powerStandby);
    EXPECT_EQ(parseFeatureReply(good, 0x10).exchange, Exchange::Garbled) << "the answer to another question";
    for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
        Bytes bad = good;
        bad[bit / 8] = static_cast<std::uint8_t>(bad[bit / 8] ^ 1U << bit % 8);
        EXPECT_NE(parseFeatureReply(bad, powerModeFeature).exchange, Exchange::Done) << "bit " << bit;
    }
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_EQ(parseFeatureReply(std::span(good).first(size), powerModeFeature).exchange, Exchange::NoReply);
    }
    EXPECT_EQ(parseFeatureReply(Bytes(11, 0xFF), powerModeFeature).exchange, Exchange::NoReply);
    EXPECT_EQ(parseFeatureReply(Bytes(11, 0), powerModeFeature).exchange, Exchange::NoReply);
    Bytes tooLong = good;
    tooLong[1] = 0xFF;
    EXPECT_EQ(parseFeatureReply(tooLong, powerModeFeature).exchange, Exchange::Garbled);
}

TEST(DdcPowerTest, AnswersThatComeLateOrBrokenAreAskedForAgain) {
    for (const bool garbled : {false, true}) {
        SimulatedMonitor monitor;
        (garbled ? monitor.garbledLeft : monitor.nullsLeft) = 2;
        DdcPower display(monitor);
        const PowerReading reading = display.readPowerMode();
        EXPECT_EQ(reading.exchange, Exchange::Done);
        EXPECT_EQ(reading.mode, powerOn);
        EXPECT_EQ(monitor.writes, 3);
    }
}

TEST(DdcPowerTest, AMonitorThatNeverAnswersIsGivenUpInTime) {
    SimulatedMonitor monitor;
    DdcPower display(monitor);
    const auto ok = [](const std::string& text) { return nlohmann::json::parse(text).at("ok").get<bool>(); };
    monitor.nullsLeft = 100;
    EXPECT_FALSE(ok(probe(display)));
    monitor.deaf = true;
    EXPECT_FALSE(ok(probe(display)));
    EXPECT_FALSE(ok(sleepDisplay(display)));
    EXPECT_FALSE(ok(wakeDisplay(display)));
    EXPECT_LT(monitor.waited, 2.0) << "of the five seconds that a command has";
    monitor.deaf = false;
    monitor.nullsLeft = 0;
    monitor.knowsPower = false;
    EXPECT_EQ(display.readPowerMode().exchange, Exchange::Unsupported);
}

TEST(DdcPowerTest, OnlyOnAndStandbyAreWritten) {
    SimulatedMonitor monitor;
    DdcPower display(monitor);
    for (int mode = 0; mode < 256; ++mode) {
        const bool allowed = mode == powerOn || mode == powerStandby;
        EXPECT_EQ(display.writePowerMode(static_cast<std::uint8_t>(mode)),
                  allowed ? Exchange::Done : Exchange::Unsupported);
    }
    EXPECT_EQ(monitor.settings, (Bytes{powerOn, powerStandby}));
    EXPECT_EQ(monitor.reads, 0) << "reading would wake a display in standby";
}

} // namespace

} // namespace rb
