#include "desktops/linux/Blit.h"

#include <QImage>
#include <QRegion>
#include <QTransform>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace rb {

namespace {

// Channels of two pixels, or of one above another, with room for products.
using Bytes = std::uint8_t __attribute__((vector_size(8)));
using Lanes = std::uint16_t __attribute__((vector_size(16)));

constexpr unsigned fractionBits = 7; // so that a channel times a weight fits 16 bits
constexpr unsigned fractions = 1U << fractionBits;
constexpr unsigned placeBits = 16;

Lanes load(const void* pixels) {
    Bytes bytes;
    std::memcpy(&bytes, pixels, sizeof bytes);
    return __builtin_convertvector(bytes, Lanes);
}

Lanes all(unsigned value) {
    return Lanes{} + static_cast<std::uint16_t>(value);
}

// A weight in every lane is dearer to make than to look up.
constexpr auto weights = [] {
    std::array<std::array<std::uint16_t, 8>, fractions> table{};
    for (std::size_t weight = 0; weight < fractions; ++weight) {
        table[weight].fill(static_cast<std::uint16_t>(weight));
    }
    return table;
}();

Lanes weightAt(std::int32_t place) {
    Lanes weight;
    std::memcpy(&weight,
                weights[static_cast<std::size_t>(place >> (placeBits - fractionBits)) & (fractions - 1)].data(),
                sizeof weight);
    return weight;
}

// Between two colours. What is too large for a lane on the way comes back within its range.
Lanes between(Lanes from, Lanes to, Lanes weight) {
    return ((from << fractionBits) + (to - from) * weight + all(fractions / 2)) >> fractionBits;
}

// The picture as the inner loop sees it. Places are in 1/65536 pixels.
struct Source {
    const std::uint32_t* pixels;
    std::ptrdiff_t stride; // pixels

    const std::uint32_t* at(std::int32_t u, std::int32_t v) const {
        return pixels + (v >> placeBits) * stride + (u >> placeBits);
    }
    // Whether nothing shows there.
    bool isClear(const std::uint32_t* place) const {
        std::uint64_t upper = 0;
        std::uint64_t lower = 0;
        std::memcpy(&upper, place, sizeof upper);
        std::memcpy(&lower, place + stride, sizeof lower);
        return (upper | lower) == 0;
    }
    // A pixel and its right neighbour at that height.
    Lanes column(const std::uint32_t* place, std::int32_t v) const {
        return between(load(place), load(place + stride), weightAt(v));
    }
};

// Value times weight (0…255) divided by 255, rounded.
Lanes scaled(Lanes value, Lanes weight) {
    const Lanes product = value * weight + all(128);
    return (product + (product >> 8U)) >> 8U;
}

// Two pixels over two others.
void blend(std::uint32_t* target, Lanes color) {
    std::uint64_t below = 0;
    std::memcpy(&below, target, sizeof below);
    if (below != 0) {
        const Lanes alpha = __builtin_shufflevector(color, color, 3, 3, 3, 3, 7, 7, 7, 7);
        color += scaled(load(target), all(255) - alpha);
    }
    const Bytes result = __builtin_convertvector(color, Bytes);
    std::memcpy(target, &result, sizeof result);
}

// A run of pixels along a line of the target.
void blendRun(std::uint32_t* target, int count, const Source& source, std::int32_t u, std::int32_t v,
              std::int32_t stepU, std::int32_t stepV, unsigned opacity) {
    std::uint32_t lastPair[2];
    for (; count > 0; count -= 2, target += 2, u += 2 * stepU, v += 2 * stepV) {
        const std::uint32_t* first = source.at(u, v);
        const std::uint32_t* second = count > 1 ? source.at(u + stepU, v + stepV) : first;
        if (source.isClear(first) && source.isClear(second)) {
            continue;
        }
        const Lanes one = source.column(first, v);
        const Lanes two = source.column(second, v + stepV);
        const Lanes across = __builtin_shufflevector(weightAt(u), weightAt(u + stepU), 0, 1, 2, 3, 8, 9, 10, 11);
        Lanes color = between(__builtin_shufflevector(one, two, 0, 1, 2, 3, 8, 9, 10, 11),
                              __builtin_shufflevector(one, two, 4, 5, 6, 7, 12, 13, 14, 15), across);
        if (opacity < 255) {
            color = scaled(color, all(opacity));
        }
        if (count > 1) {
            blend(target, color);
        } else {
            lastPair[0] = *target;
            lastPair[1] = 0;
            blend(lastPair, color);
            *target = lastPair[0];
        }
    }
}

struct Interval {
    double begin;
    double end;
};

// Where start + x * step stays within [0, limit]; the end lies before the beginning for nowhere.
Interval within(double start, double step, double limit, Interval range) {
    if (std::abs(step) < 1e-9) {
        return start >= 0 && start <= limit ? range : Interval{1, 0};
    }
    const double a = -start / step;
    const double b = (limit - start) / step;
    return {std::max(range.begin, std::min(a, b)), std::min(range.end, std::max(a, b))};
}

} // namespace

void blit(QImage& target, const QRegion& clip, const QImage& picture, const QTransform& toTarget, double opacity) {
    const int alpha = static_cast<int>(std::lround(std::clamp(opacity, 0.0, 1.0) * 255));
    bool invertible = false;
    const QTransform inverse = toTarget.inverted(&invertible);
    if (!invertible || alpha == 0 || picture.width() < 3 || picture.height() < 3) {
        return;
    }
    const Source source{reinterpret_cast<const std::uint32_t*>(picture.constBits()), picture.bytesPerLine() / 4};
    const QRect covered = toTarget.mapRect(QRectF(picture.rect())).toAlignedRect() & target.rect();
    constexpr double unit = 1U << placeBits;
    // Every pixel of a run reads its place, the next one and the line below: all of them inside the picture.
    const double lastColumn = picture.width() - 2 - 1 / unit;
    const double lastRow = picture.height() - 2 - 1 / unit;
    const auto stepU = static_cast<std::int32_t>(std::lround(inverse.m11() * unit));
    const auto stepV = static_cast<std::int32_t>(std::lround(inverse.m12() * unit));
    for (const QRect& part : clip& covered) {
        for (int y = part.top(); y <= part.bottom(); ++y) {
            // Centres of pixels lie at halves on both sides.
            const QPointF first = inverse.map(QPointF(part.left() + 0.5, y + 0.5)) - QPointF(0.5, 0.5);
            Interval run{0, static_cast<double>(part.width())};
            run = within(first.x(), stepU / unit, lastColumn, run);
            run = within(first.y(), stepV / unit, lastRow, run);
            const int begin = static_cast<int>(std::ceil(run.begin - 1e-9));
            const int end = std::min(part.width(), static_cast<int>(std::floor(run.end + 1e-9)) + 1);
            if (begin >= end) {
                continue;
            }
            const auto u = static_cast<std::int32_t>(std::lround((first.x() + begin * (stepU / unit)) * unit));
            const auto v = static_cast<std::int32_t>(std::lround((first.y() + begin * (stepV / unit)) * unit));
            blendRun(reinterpret_cast<std::uint32_t*>(target.scanLine(y)) + part.left() + begin, end - begin, source, u,
                     v, stepU, stepV, static_cast<unsigned>(alpha));
        }
    }
}

} // namespace rb
