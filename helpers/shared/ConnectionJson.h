#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

// Pieces of the snapshot of ports, cables and devices. What isn't known has no key.
namespace rb {

// From a cable's answer to "Discover Identity"; null when its marker wasn't read (a header of 0).
nlohmann::json cableJson(std::uint32_t idHeader, std::uint32_t cableObject);
// The maker's name stands before the product's unless that begins with it.
nlohmann::json deviceJson(const std::optional<std::string>& maker, const std::optional<std::string>& product,
                          const std::optional<std::string>& speed);
// "480 Mbps", "10 Gbps".
std::string speedText(double bitsPerSecond);
// The whole snapshot as one line; malformed UTF-8 is replaced.
std::string snapshotLine(nlohmann::json ports);

} // namespace rb
