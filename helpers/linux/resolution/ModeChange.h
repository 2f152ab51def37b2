#pragma once

#include "helpers/linux/shared/Randr.h"

#include <optional>
#include <string>
#include <vector>

// Which outputs a change of mode moves, and how it is undone. Pure but for applyArrangement().
namespace rb {

// The state of the whole screen as far as a change touches it.
struct Arrangement {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t millimetreWidth = 0;
    std::uint32_t millimetreHeight = 0;
    std::vector<RandrCrtc> crtcs = {};
    friend bool operator==(const Arrangement&, const Arrangement&) = default;
};

struct ModeChange {
    Arrangement before;
    Arrangement after;
    std::uint32_t crtc = 0; // the one whose mode changes
};

// Sets the mode on the output's own area; neighbours to the right of it and below it move along, so that nothing
// overlaps and no gap appears. Nothing when the output is off or doesn't have the mode.
std::optional<ModeChange> planChange(const RandrState& state, std::uint32_t output, std::uint32_t mode);

// Brings the areas to the arrangement and gives back whether the server confirms every one of them.
bool applyArrangement(xcb_connection_t* connection, xcb_window_t root, const Arrangement& arrangement);

// The arrangement that a mode is taken back to, as a text for a file.
std::string writeArrangement(const Arrangement& arrangement);
// Nothing for a text that isn't one, or has numbers that no server has.
std::optional<Arrangement> readArrangement(const std::string& text);

} // namespace rb
