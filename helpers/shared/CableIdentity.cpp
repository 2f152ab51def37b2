#include "helpers/shared/CableIdentity.h"

#include <algorithm>
#include <array>

namespace rb {

namespace {

constexpr std::uint32_t passiveCable = 3;
constexpr std::uint32_t activeCable = 4;
constexpr int standardVolts = 20;
constexpr int extendedWatts = 240; // 48 V × 5 A, the highest contract there is

constexpr std::uint32_t bits(std::uint32_t word, unsigned low, unsigned count) {
    return word >> low & ((1U << count) - 1);
}

} // namespace

CableIdentity readCableIdentity(std::uint32_t idHeader, std::uint32_t cableObject) {
    CableIdentity cable{.vendorID = static_cast<std::uint16_t>(idHeader & 0xFFFFU)};
    const std::uint32_t type = bits(idHeader, 27, 3);
    if (type != passiveCable && type != activeCable) {
        return cable;
    }
    constexpr std::array<const char*, 5> speeds{"USB 2.0 (480 Mbps)", "USB 3.2 Gen 1 (5 Gbps)",
                                                "USB 3.2 / USB4 Gen 2 (10 Gbps)", "USB4 Gen 3 (40 Gbps)",
                                                "USB4 Gen 4 (80 Gbps)"};
    if (const std::uint32_t speed = bits(cableObject, 0, 3); speed < speeds.size()) {
        cable.speed = speeds.at(speed);
    }
    constexpr std::array<int, 4> volts{20, 30, 40, 50};
    cable.maxVolts = volts.at(bits(cableObject, 9, 2));
    constexpr unsigned throughBit = 4; // an active cable may carry no power at all
    if (type == passiveCable || bits(cableObject, throughBit, 1) == 1) {
        const std::uint32_t current = bits(cableObject, 5, 2);
        if (current == 1 || current == 2) {
            cable.maxAmps = current == 1 ? 3 : 5;
        }
    }
    if (cable.maxAmps) {
        constexpr unsigned extendedBit = 17;
        const bool extended = bits(cableObject, extendedBit, 1) == 1 && *cable.maxVolts == 50 && *cable.maxAmps == 5;
        cable.maxWatts = extended ? extendedWatts : std::min(*cable.maxVolts, standardVolts) * *cable.maxAmps;
    }
    return cable;
}

} // namespace rb
