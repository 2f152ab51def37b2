#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The identity of a cable as its electronic marker answers it (USB Power Delivery, "Discover Identity").
namespace rb {

struct CableIdentity {
    std::uint16_t vendorID = 0;
    std::optional<std::string> speed = std::nullopt;
    std::optional<int> maxVolts = std::nullopt;
    std::optional<int> maxAmps = std::nullopt;
    std::optional<int> maxWatts = std::nullopt;
};

// From the ID header and the cable's own object. A field whose value the standard reserves stays away.
CableIdentity readCableIdentity(std::uint32_t idHeader, std::uint32_t cableObject);

} // namespace rb
