#pragma once

#include "platform/Screens.h"

#include <optional>
#include <vector>

namespace rb {

// Where a window must go to be seen and held by its title bar; nothing when it stands well where it is, or when there
// is no screen. Frames in screen coordinates.
std::optional<Rect> betterFrame(const Rect& frame, const std::vector<Screen>& screens,
                                const std::optional<Screen>& mainScreen);

} // namespace rb
