#pragma once

#include "platform/Displays.h"

#include <string>
#include <vector>

namespace rb {

// A display mode as the window offers it.
struct ModeRecord {
    std::int32_t modeID = 0;
    std::size_t width = 0; // points
    std::size_t height = 0;
    std::size_t pixelWidth = 0;
    std::size_t pixelHeight = 0;
    double rate = 0; // hertz; 0 when unknown
    bool hidpi = false;
    std::string label = {};
    friend bool operator==(const ModeRecord&, const ModeRecord&) = default;
};

ModeRecord RBModeInfo(const DisplayMode& mode);

// The modes for the picker: usable ones, each number once, HiDPI first, then by area and by rate, the largest first.
std::vector<ModeRecord> modeList(const std::vector<DisplayMode>& modes);

// The name of a physical display for the helpers: its number, vendor, model and serial number.
std::string modeIdentity(const DisplayIdentity& identity);

// Whether a mode that was read back is the chosen one; systems round rates differently.
bool isSameMode(const ModeRecord& chosen, const ModeRecord& actual);

} // namespace rb
