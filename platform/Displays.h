#pragma once

#include "platform/Handle.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// One mode that the system lists for a display, as the system tells it.
struct DisplayMode {
    std::int32_t modeID = 0;
    std::size_t width = 0; // points
    std::size_t height = 0;
    std::size_t pixelWidth = 0;
    std::size_t pixelHeight = 0;
    double refreshRate = 0; // hertz; 0 when the system doesn't know it
    bool usableForDesktop = true;
    friend bool operator==(const DisplayMode&, const DisplayMode&) = default;
};

// What tells one physical display from another.
struct DisplayIdentity {
    std::uint32_t id = 0; // the number of the display's Screen
    std::uint32_t vendor = 0;
    std::uint32_t model = 0;
    std::uint32_t serial = 0;
    friend bool operator==(const DisplayIdentity&, const DisplayIdentity&) = default;
};

struct ConnectedDisplay {
    DisplayIdentity identity = {};
    std::string name = {}; // empty when the display has none
    bool main = false;
    bool builtin = false;
    // In the system's order, low-resolution duplicates included; empty when the system lists none.
    std::vector<DisplayMode> modes = {};
    std::optional<DisplayMode> currentMode = std::nullopt;
};

// The displays behind the screens: who made them and which modes they have. Main thread only.
class Displays {
public:
    virtual ~Displays() = default;
    // In the order of the screens. A screen without a number is left out.
    virtual std::vector<ConnectedDisplay> all() const = 0;
    // Who is at that number now, and in which mode; nothing when nobody is.
    virtual std::optional<ConnectedDisplay> display(std::uint32_t id) const = 0;
    // Displays came or went, or their modes or arrangement changed.
    virtual Handle onChange(std::function<void()> changed) = 0;
};

} // namespace rb
