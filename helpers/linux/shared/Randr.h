#pragma once

#include "helpers/shared/Edid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>
#include <xcb/randr.h>
#include <xcb/xcb.h>

// What the X server knows of outputs and modes, and how a mode is set. Sizes in X11 pixels.
namespace rb {

struct RandrMode {
    std::uint32_t id = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    double rate = 0; // hertz; 0 when it can't be computed
};

struct RandrCrtc {
    std::uint32_t id = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::uint32_t width = 0; // of the area it shows: the mode's, turned and scaled
    std::uint32_t height = 0;
    std::uint32_t mode = 0; // 0: off
    std::uint16_t rotation = XCB_RANDR_ROTATION_ROTATE_0;
    std::vector<std::uint32_t> outputs = {};
    friend bool operator==(const RandrCrtc&, const RandrCrtc&) = default;
};

struct RandrOutput {
    std::uint32_t id = 0;
    std::string name = {};
    std::string connectorType = {}; // "Panel", "HDMI-A" …; empty when the driver doesn't tell
    bool connected = false;
    std::uint32_t crtc = 0; // 0: off
    std::vector<std::uint32_t> modes = {};
    std::vector<std::uint8_t> edidBytes = {};
    std::optional<Edid> edid = std::nullopt;

    // A laptop's own panel.
    bool isBuiltin() const;
    // The display's name, else the connector's.
    const std::string& displayName() const;
};

struct RandrState {
    std::uint32_t configTimestamp = 0;
    std::uint32_t primary = 0; // 0: none
    std::uint32_t width = 0;   // of the whole screen
    std::uint32_t height = 0;
    std::uint32_t millimetreWidth = 0;
    std::uint32_t millimetreHeight = 0;
    std::vector<RandrMode> modes = {};
    std::vector<RandrCrtc> crtcs = {};
    std::vector<RandrOutput> outputs = {};

    const RandrMode* mode(std::uint32_t id) const;
    const RandrCrtc* crtc(std::uint32_t id) const;
    const RandrOutput* output(std::uint32_t id) const;
    // The outputs that show something, the primary one first, then in the server's order.
    std::vector<const RandrOutput*> activeOutputs() const;
};

// Whether the area is turned by a quarter.
bool isTurned(std::uint16_t rotation);

// Nothing without RandR 1.2 or when the server is gone. One round trip for each kind of thing.
std::optional<RandrState> readRandr(xcb_connection_t* connection, xcb_window_t root);

// "%u:%u:%u:%u" of output, vendor, model and serial number.
std::string identityOf(const RandrOutput& output);

} // namespace rb
