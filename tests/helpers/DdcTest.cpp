#include "helpers/linux/display/DdcBus.h"

#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

namespace rb {

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes reply(Bytes payload) {
    Bytes bytes{0x6E, static_cast<std::uint8_t>(0x80 | payload.size())};
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    bytes.push_back(std::accumulate(bytes.begin(), bytes.end(), std::uint8_t{0x50},
                                    [](std::uint8_t a, std::uint8_t b) { return static_cast<std::uint8_t>(a ^ b); }));
    return bytes;
}

Bytes powerMode(std::uint8_t mode) {
    return reply({0x02, 0x00, 0xD6, 0x00, 0x00, 0x05, 0x00, mode});
}

const Bytes unsupported = reply({0x02, 0x01, 0xD6, 0x00, 0x00, 0x00, 0x00, 0x00});
const Bytes emptyReply{0x6E, 0x80, 0xBE};
const Bytes silence{}; // nobody takes the address

// A monitor at the level of bytes, with the time that its bus takes. It answers what the test lines up, the last again
// and again, and demands the pauses that the standard asks for.
class SimulatedMonitor final : public I2cBuses {
public:
    Opened open(int bus) override {
        opened.push_back(bus);
        if (failure != Exchange::Done) {
            return {nullptr, failure};
        }
        return {std::make_unique<Bus>(*this), Exchange::Done};
    }
    void pause(double seconds) override { time += seconds; }
    double now() override { return time; }

    std::deque<Bytes> answers{powerMode(powerOn)};
    int refusedWrites = 0;
    double slowness = 0; // seconds a message
    Exchange failure = Exchange::Done;
    double time = 0;
    std::vector<int> opened;
    std::vector<Bytes> written;

private:
    class Bus final : public I2cBus {
    public:
        explicit Bus(SimulatedMonitor& monitor)
            : monitor_(monitor) {}
        bool write(std::span<const std::uint8_t> bytes) override {
            monitor_.time += monitor_.slowness;
            monitor_.written.emplace_back(bytes.begin(), bytes.end());
            EXPECT_GE(monitor_.time - last_, 0.05) << "between two messages";
            last_ = monitor_.time;
            return monitor_.refusedWrites-- <= 0;
        }
        bool read(std::span<std::uint8_t> bytes) override {
            monitor_.time += monitor_.slowness;
            EXPECT_GE(monitor_.time - last_, 0.04) << "before an answer";
            const Bytes answer = monitor_.answers.front();
            if (monitor_.answers.size() > 1) {
                monitor_.answers.pop_front();
            }
            if (answer.empty()) {
                return false;
            }
            for (std::size_t i = 0; i < bytes.size(); ++i) {
                bytes[i] = i < answer.size() ? answer[i] : answer.back();
            }
            return true;
        }

    private:
        SimulatedMonitor& monitor_;
        double last_ = -1;
    };
};

class DdcTest : public testing::Test {
protected:
    SimulatedMonitor monitor_;
    DdcBus bus_{monitor_};
};

TEST_F(DdcTest, TheMessagesAreTheStandards) {
    const auto reading = bus_.readPowerMode(7);
    EXPECT_EQ(reading.exchange, Exchange::Done);
    EXPECT_EQ(reading.mode, powerOn);
    EXPECT_EQ(bus_.writePowerMode(7, powerStandby), Exchange::Done);
    EXPECT_EQ(monitor_.written,
              (std::vector<Bytes>{{0x51, 0x82, 0x01, 0xD6, 0x6A}, {0x51, 0x84, 0x03, 0xD6, 0x00, 0x04, 0x6A}}));
    EXPECT_EQ(monitor_.opened, (std::vector<int>{7, 7})) << "one bus and no other";
}

TEST_F(DdcTest, OnlyOnAndTheStandbyThatACommandEndsAreWritten) {
    for (int mode = 0; mode < 256; ++mode) {
        const auto value = static_cast<std::uint8_t>(mode);
        const bool allowed = value == powerOn || value == powerStandby;
        EXPECT_EQ(bus_.writePowerMode(3, value), allowed ? Exchange::Done : Exchange::Unsupported);
    }
    EXPECT_EQ(monitor_.written.size(), 2U);
}

TEST_F(DdcTest, PatienceWithAnswersThatComeLate) {
    Bytes wrongSum = powerMode(powerOn);
    wrongSum.back() ^= 1;
    Bytes otherFeature = reply({0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32});
    monitor_.answers = {silence, emptyReply, wrongSum, otherFeature, Bytes(11, 0), powerMode(powerStandby)};
    monitor_.refusedWrites = 1;
    const auto reading = bus_.readPowerMode(1);
    EXPECT_EQ(reading.exchange, Exchange::Done);
    EXPECT_EQ(reading.mode, powerStandby);
    EXPECT_EQ(monitor_.written.size(), 7U);
}

TEST_F(DdcTest, WhatGoesWrongForGoodIsToldApart) {
    Bytes wrongSum = powerMode(powerOn);
    wrongSum[9] ^= 4;
    struct Case {
        const char* name;
        Bytes answer;
        Exchange expected;
    };
    for (const Case& tested : std::vector<Case>{{"nobody there", silence, Exchange::NoReply},
                                                {"empty answers", emptyReply, Exchange::NoReply},
                                                {"an undriven bus", Bytes(11, 0xFF), Exchange::NoReply},
                                                {"wrong sums", wrongSum, Exchange::Garbled},
                                                {"an impossible length", {0x6E, 0xFF, 0x00}, Exchange::Garbled},
                                                {"no length mark", {0x6E, 0x08, 0x02}, Exchange::Garbled},
                                                {"an unknown feature", unsupported, Exchange::Unsupported}}) {
        SCOPED_TRACE(tested.name);
        monitor_ = SimulatedMonitor();
        monitor_.answers = {tested.answer};
        EXPECT_EQ(bus_.readPowerMode(1).exchange, tested.expected);
        EXPECT_LE(monitor_.time, 2) << "whoever waits gives up after five seconds";
        EXPECT_EQ(monitor_.written.size(), tested.expected == Exchange::Unsupported ? 1U : monitor_.written.size());
    }
    monitor_ = SimulatedMonitor();
    monitor_.refusedWrites = 1000;
    monitor_.slowness = 0.4; // a bus that hangs until its time-out
    EXPECT_EQ(bus_.writePowerMode(1, powerOn), Exchange::NoReply);
    EXPECT_LE(monitor_.time, 2);
    monitor_.failure = Exchange::NoAccess;
    EXPECT_EQ(bus_.readPowerMode(1).exchange, Exchange::NoAccess);
    EXPECT_EQ(bus_.writePowerMode(1, powerOn), Exchange::NoAccess);
}

TEST_F(DdcTest, ASettingThatIsRefusedIsTriedAgain) {
    monitor_.refusedWrites = 2;
    EXPECT_EQ(bus_.writePowerMode(1, powerOn), Exchange::Done);
    EXPECT_EQ(monitor_.written.size(), 3U) << "and not once more than needed";
}

} // namespace

} // namespace rb
