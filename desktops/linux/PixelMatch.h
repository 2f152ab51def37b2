#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace rb {

// Rows from the top, 32 bits a pixel, without gaps; all pixels have the same alpha.
struct PixelPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
};

struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

// Where in `screen` exactly this picture shows, when that is one place and no other. Nothing as well when the search
// grows too long, as it does for pictures of almost one colour. Any thread.
std::optional<PixelRect> onlyPlaceOf(const PixelPicture& picture, const PixelPicture& screen);

} // namespace rb
