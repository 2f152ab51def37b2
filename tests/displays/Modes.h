#pragma once

#include "platform/Displays.h"

#include <cstddef>
#include <cstdint>

namespace rb {

// A mode with `scale` pixels a point.
inline DisplayMode modeOf(std::int32_t id, std::size_t width, std::size_t height, double rate, std::size_t scale = 1) {
    return {.modeID = id,
            .width = width,
            .height = height,
            .pixelWidth = width * scale,
            .pixelHeight = height * scale,
            .refreshRate = rate};
}

} // namespace rb
