#include "helpers/linux/display/DdcBus.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace rb {

namespace {

// Addresses as they count in checksums: of the monitor when it is written to, of the host when it reads.
constexpr std::uint8_t monitorAddress = 0x6E;
constexpr std::uint8_t hostAddress = 0x51;
constexpr std::uint8_t replyAddress = 0x50;
constexpr std::uint8_t lengthMark = 0x80; // set in every length byte
constexpr std::uint8_t getFeature = 0x01;
constexpr std::uint8_t featureReply = 0x02;
constexpr std::uint8_t setFeature = 0x03;
constexpr std::uint8_t powerModeFeature = 0xD6;
constexpr std::size_t replyLength = 8;

// A monitor needs 40 ms to make an answer ready and 50 ms to digest a setting.
constexpr double betweenMessages = 0.05; // seconds
constexpr double afterEmptyAnswer = 0.1; // it isn't ready yet
constexpr double patience = 1.5;         // for one exchange; whoever started us gives a command five
constexpr int mostAttempts = 10;

std::uint8_t checksum(std::uint8_t start, std::span<const std::uint8_t> bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), start,
                           [](std::uint8_t sum, std::uint8_t byte) { return static_cast<std::uint8_t>(sum ^ byte); });
}

std::vector<std::uint8_t> message(std::initializer_list<std::uint8_t> payload) {
    std::vector<std::uint8_t> bytes{hostAddress, static_cast<std::uint8_t>(lengthMark | payload.size())};
    bytes.insert(bytes.end(), payload);
    bytes.push_back(checksum(monitorAddress, bytes));
    return bytes;
}

using Reply = std::array<std::uint8_t, replyLength + 3>;

PowerBus::Reading understand(const Reply& reply) {
    // A bus that nobody drives reads as all zeros or all ones.
    if (std::all_of(reply.begin(), reply.end(), [&](std::uint8_t byte) { return byte == reply[0]; })) {
        return {Exchange::NoReply, 0};
    }
    const std::size_t length = reply[1] & static_cast<std::uint8_t>(~lengthMark);
    if (reply[0] != monitorAddress || (reply[1] & lengthMark) == 0 || length > replyLength ||
        checksum(replyAddress, std::span(reply).first(length + 2)) != reply.at(length + 2)) {
        return {Exchange::Garbled, 0};
    }
    if (length == 0) {
        return {Exchange::NoReply, 0};
    }
    if (length != replyLength || reply[2] != featureReply || reply[4] != powerModeFeature || reply[3] > 1) {
        return {Exchange::Garbled, 0}; // the answer to somebody else's question
    }
    constexpr std::size_t currentValue = 9; // its low byte
    return reply[3] == 0 ? PowerBus::Reading{Exchange::Done, reply.at(currentValue)}
                         : PowerBus::Reading{Exchange::Unsupported, 0};
}

} // namespace

PowerBus::Reading DdcBus::readPowerMode(int bus) {
    const auto opened = buses_.open(bus);
    if (!opened.bus) {
        return {opened.failure, 0};
    }
    const double end = buses_.now() + patience;
    Reading reading;
    bool garbled = false;
    for (int attempt = 0; attempt < mostAttempts && (attempt == 0 || buses_.now() < end); ++attempt) {
        if (attempt > 0) {
            buses_.pause(garbled ? betweenMessages : afterEmptyAnswer);
        }
        Reply reply{};
        if (!opened.bus->write(message({getFeature, powerModeFeature}))) {
            continue;
        }
        buses_.pause(betweenMessages);
        if (!opened.bus->read(reply)) {
            continue;
        }
        reading = understand(reply);
        if (reading.exchange == Exchange::Done || reading.exchange == Exchange::Unsupported) {
            return reading;
        }
        garbled = garbled || reading.exchange == Exchange::Garbled;
    }
    return {garbled ? Exchange::Garbled : Exchange::NoReply, 0};
}

Exchange DdcBus::writePowerMode(int bus, std::uint8_t mode) {
    if (mode != powerOn && mode != powerStandby) {
        return Exchange::Unsupported;
    }
    const auto opened = buses_.open(bus);
    if (!opened.bus) {
        return opened.failure;
    }
    const double end = buses_.now() + patience;
    bool taken = false;
    for (int attempt = 0; !taken && attempt < mostAttempts && (attempt == 0 || buses_.now() < end); ++attempt) {
        taken = opened.bus->write(message({setFeature, powerModeFeature, 0, mode}));
        buses_.pause(betweenMessages);
    }
    return taken ? Exchange::Done : Exchange::NoReply;
}

} // namespace rb
