#pragma once

#include "displays/ModeRecord.h"

#include <optional>
#include <string>
#include <vector>

namespace rb {

// One display in the window.
struct DisplayRow {
    std::uint32_t id = 0;
    std::string name = {};
    bool main = false;
    bool online = true; // false: it was put to standby and is out of reach since
    bool builtin = false;
    std::string modeIdentity = {};
    std::vector<ModeRecord> modes = {};
    std::optional<ModeRecord> currentMode = std::nullopt;
    // Nothing when there is no current mode.
    std::optional<std::string> resolution = std::nullopt;
    std::optional<std::string> refresh = std::nullopt;
    // Standby of this one display.
    std::optional<std::string> status = std::nullopt;
    std::string uuid = {}; // its control channel; empty when none was found
    bool supported = false;
    bool sleepRequested = false; // put to standby by us and not seen awake since
    friend bool operator==(const DisplayRow&, const DisplayRow&) = default;
};

// The row of a connected display, before its standby is known.
DisplayRow rowOf(const ConnectedDisplay& display);

} // namespace rb
