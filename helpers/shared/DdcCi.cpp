#include "helpers/shared/DdcCi.h"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>

namespace rb {

namespace {

constexpr std::uint8_t toMonitor = 0x6E;   // the monitor's address with the bit for writing; it signs its replies so
constexpr std::uint8_t virtualHost = 0x50; // what the checksum of a reply begins with
constexpr std::uint8_t lengthMark = 0x80;  // in the byte that says how many follow
constexpr std::uint8_t getFeature = 0x01;
constexpr std::uint8_t featureIs = 0x02;
constexpr std::uint8_t setFeature = 0x03;
constexpr double timeToAnswer = 0.05; // seconds; the standard asks for 40 ms
constexpr double timeBetweenMessages = 0.05;
constexpr int attempts = 4;

std::uint8_t checksum(std::uint8_t start, std::span<const std::uint8_t> bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), start, std::bit_xor<std::uint8_t>());
}

std::vector<std::uint8_t> message(std::initializer_list<std::uint8_t> body) {
    std::vector<std::uint8_t> bytes{ddcHost, static_cast<std::uint8_t>(lengthMark | body.size())};
    bytes.insert(bytes.end(), body);
    bytes.push_back(checksum(toMonitor, bytes));
    return bytes;
}

} // namespace

std::vector<std::uint8_t> featureRequest(std::uint8_t feature) {
    return message({getFeature, feature});
}

std::vector<std::uint8_t> featureSetting(std::uint8_t feature, std::uint16_t value) {
    return message({setFeature, feature, static_cast<std::uint8_t>(value >> 8U), static_cast<std::uint8_t>(value)});
}

FeatureReply parseFeatureReply(std::span<const std::uint8_t> bytes, std::uint8_t feature) {
    const auto all = [&](std::uint8_t byte) {
        return std::all_of(bytes.begin(), bytes.end(), [&](std::uint8_t b) { return b == byte; });
    };
    constexpr std::uint8_t nullMessage = lengthMark; // nothing follows
    if (bytes.size() < featureReplySize || all(0) || all(0xFF) || (bytes[0] == toMonitor && bytes[1] == nullMessage)) {
        return {Exchange::NoReply, 0};
    }
    constexpr std::uint8_t length = featureReplySize - 3; // without source, length and checksum
    const auto signedBytes = bytes.first(featureReplySize - 1);
    if (bytes[0] != toMonitor || bytes[1] != (lengthMark | length) || bytes[2] != featureIs || bytes[4] != feature ||
        bytes[featureReplySize - 1] != checksum(virtualHost, signedBytes)) {
        return {Exchange::Garbled, 0};
    }
    if (bytes[3] != 0) {
        return {Exchange::Unsupported, 0};
    }
    return {Exchange::Done, static_cast<std::uint16_t>(bytes[8] << 8U | bytes[9])};
}

FeatureReply DdcPower::ask() {
    if (const auto failed = line_.write(featureRequest(powerModeFeature))) {
        return {*failed, 0};
    }
    line_.pause(timeToAnswer);
    std::array<std::uint8_t, featureReplySize> reply{};
    if (const auto failed = line_.read(reply)) {
        return {*failed, 0};
    }
    return parseFeatureReply(reply, powerModeFeature);
}

PowerReading DdcPower::readPowerMode() {
    FeatureReply reply;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (attempt > 0) {
            line_.pause(timeBetweenMessages);
        }
        reply = ask();
        if (reply.exchange != Exchange::NoReply && reply.exchange != Exchange::Garbled) {
            break;
        }
    }
    return {reply.exchange, static_cast<std::uint8_t>(reply.value)};
}

Exchange DdcPower::writePowerMode(std::uint8_t mode) {
    if (mode != powerOn && mode != powerStandby) {
        return Exchange::Unsupported;
    }
    std::optional<Exchange> failed;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (attempt > 0) {
            line_.pause(timeBetweenMessages);
        }
        failed = line_.write(featureSetting(powerModeFeature, mode));
        if (failed != Exchange::NoReply) {
            break;
        }
    }
    line_.pause(timeBetweenMessages);
    return failed.value_or(Exchange::Done);
}

} // namespace rb
