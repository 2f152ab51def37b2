#include "desktops/linux/PixelMatch.h"

#include <cstddef>
#include <cstring>

namespace rb {

namespace {

constexpr std::size_t sampleCount = 12;
constexpr std::size_t mostCompared = 400'000'000; // pixels; about a tenth of a second

struct Sample {
    std::size_t offset; // in the screen, from the picture's top left
    std::uint32_t color;
};

// Pixels of the picture that differ from their left neighbours, spread over it: a wrong place seldom has them all.
std::vector<Sample> tellingPixels(const PixelPicture& picture, std::size_t screenWidth) {
    std::vector<Sample> samples;
    const auto width = static_cast<std::size_t>(picture.width);
    const std::size_t count = picture.pixels.size();
    for (std::size_t part = 0; part < sampleCount; ++part) {
        const std::size_t from = count * part / sampleCount;
        const std::size_t to = count * (part + 1) / sampleCount;
        std::size_t chosen = from + (to - from) / 2;
        for (std::size_t i = from + 1; i < to; ++i) {
            if (i % width != 0 && picture.pixels[i] != picture.pixels[i - 1]) {
                chosen = i;
                break;
            }
        }
        if (chosen < count) {
            samples.push_back({chosen / width * screenWidth + chosen % width, picture.pixels[chosen]});
        }
    }
    return samples;
}

} // namespace

std::optional<PixelRect> onlyPlaceOf(const PixelPicture& picture, const PixelPicture& screen) {
    if (picture.width <= 0 || picture.height <= 0 || picture.width > screen.width || picture.height > screen.height) {
        return std::nullopt;
    }
    const auto screenWidth = static_cast<std::size_t>(screen.width);
    const auto width = static_cast<std::size_t>(picture.width);
    const std::vector<Sample> samples = tellingPixels(picture, screenWidth);
    std::size_t compared = 0;
    std::optional<PixelRect> place;
    for (int y = 0; y + picture.height <= screen.height; ++y) {
        const std::uint32_t* row = screen.pixels.data() + static_cast<std::size_t>(y) * screenWidth;
        for (int x = 0; x + picture.width <= screen.width; ++x) {
            const std::uint32_t* corner = row + x;
            bool same = true;
            for (const Sample& sample : samples) {
                ++compared;
                if (corner[sample.offset] != sample.color) {
                    same = false;
                    break;
                }
            }
            for (std::size_t line = 0; same && line < static_cast<std::size_t>(picture.height); ++line) {
                compared += width;
                same = std::memcmp(corner + line * screenWidth, picture.pixels.data() + line * width,
                                   width * sizeof(std::uint32_t)) == 0;
            }
            if (same && place) {
                return std::nullopt;
            }
            if (same) {
                place = PixelRect{x, y, picture.width, picture.height};
            }
            if (compared > mostCompared) {
                return std::nullopt;
            }
        }
    }
    return place;
}

} // namespace rb
