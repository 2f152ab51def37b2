#pragma once

#include "displays/DisplayRow.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the cable helper tells of the ports. Every field may be missing; one of a wrong kind counts as missing.
namespace rb {

struct DisplayLink {
    std::optional<std::string> monitorName = std::nullopt;
    std::optional<std::string> branchDevice = std::nullopt; // adapter or hub on the way
    std::optional<std::string> sinkType = std::nullopt;
    std::optional<std::int64_t> lanes = std::nullopt;
    std::optional<std::string> rate = std::nullopt;
};

struct Cable {
    std::optional<double> maxWatts = std::nullopt;
    std::optional<std::string> speed = std::nullopt;
    std::optional<std::string> vendorName = std::nullopt;
    // The models of the entries in the certification register; nothing for an entry without one.
    std::vector<std::optional<std::string>> listings = {};
    std::optional<std::string> currentRating = std::nullopt;
    std::optional<std::string> maxVolts = std::nullopt;
    std::uint32_t vendorID = 0;
};

struct NegotiatedPower {
    double powerW = 0;
    double voltageV = 0;
    double currentA = 0;
};

struct PowerSource {
    std::string name = {};
    std::optional<NegotiatedPower> negotiated = std::nullopt;
    std::optional<double> maxPowerW = std::nullopt;
};

struct AttachedDevice {
    std::optional<std::string> name = std::nullopt;
    std::optional<std::string> speed = std::nullopt;
};

struct Port {
    std::optional<std::string> name = std::nullopt;
    bool connectionActive = false;
    std::vector<std::string> activeTransports = {};
    bool videoOnly = false;
    std::vector<DisplayLink> displays = {};
    std::optional<Cable> cable = std::nullopt;
    std::vector<PowerSource> powerSources = {};
    std::optional<std::string> chargingSummary = std::nullopt;
    std::vector<AttachedDevice> devices = {};
};

struct ConnectionSnapshot {
    std::vector<Port> ports = {};
    std::optional<std::string> error = std::nullopt; // in place of ports, a text for the user
};

// Nothing when the text is no JSON object.
std::optional<ConnectionSnapshot> parseSnapshot(std::string_view text);

// The texts of the transports in their order, joined; empty when nothing is worth showing.
std::string transportLabel(const std::vector<std::string>& tokens);
// The source whose numbers are shown, or null when it is ambiguous.
const PowerSource* powerSource(const std::vector<PowerSource>& sources);
// The port that feeds the display; null unless display and port name each other and nobody else.
const Port* portForDisplay(const DisplayRow& row, const std::vector<DisplayRow>& rows,
                           const ConnectionSnapshot& snapshot);
// "10 Gbps" of a longer text.
std::string shortSpeed(const std::optional<std::string>& speed);

} // namespace rb
