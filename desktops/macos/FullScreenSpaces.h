#pragma once

#include <cstdint>

namespace rb {

// Whether the current space of that display belongs to a full-screen application. Asked of the window server through
// functions that have no public declaration; false where they are missing or answer something else.
bool displayShowsFullScreenSpace(std::uint32_t displayId);

} // namespace rb
