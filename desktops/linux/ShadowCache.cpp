#include "desktops/linux/ShadowCache.h"

#include "desktops/linux/LayerGeometry.h"

#include <QPainter>
#include <QPen>
#include <algorithm>
#include <cmath>
#include <cstddef>

namespace rb {

namespace {

constexpr std::size_t cacheSize = 48;
// Standard deviation, in pixels of the stored image, that enlarging still shows smoothly.
constexpr double coarsest = 2;

std::vector<float> gaussian(double deviation) {
    const std::ptrdiff_t reach = std::max(std::ptrdiff_t{1}, static_cast<std::ptrdiff_t>(std::ceil(3 * deviation)));
    std::vector<float> weights(2 * static_cast<std::size_t>(reach) + 1);
    float total = 0;
    for (std::ptrdiff_t i = -reach; i <= reach; ++i) {
        const double x = static_cast<double>(i) / std::max(deviation, 0.01);
        const auto weight = static_cast<float>(std::exp(-x * x / 2));
        weights[static_cast<std::size_t>(i + reach)] = weight;
        total += weight;
    }
    for (float& weight : weights) {
        weight /= total;
    }
    return weights;
}

// One line of `count` values, `stride` apart, with nothing beyond its ends.
void blurLine(const float* from, float* to, int count, std::ptrdiff_t stride, const std::vector<float>& weights) {
    const auto reach = static_cast<std::ptrdiff_t>(weights.size() / 2);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        float value = 0;
        for (std::ptrdiff_t k = std::max(-reach, -i); k <= std::min(reach, count - 1 - i); ++k) {
            value += from[(i + k) * stride] * weights[static_cast<std::size_t>(k + reach)];
        }
        to[i * stride] = value;
    }
}

// Replaces the picture by its blurred alpha in that colour.
void blur(QImage& image, double deviation, const QColor& color) {
    const int width = image.width();
    const int height = image.height();
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const auto at = [width](int x, int y) {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    };
    std::vector<float> alpha(count);
    std::vector<float> across(count);
    for (int y = 0; y < height; ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            alpha[at(x, y)] = static_cast<float>(qAlpha(line[x]));
        }
    }
    const std::vector<float> weights = gaussian(deviation);
    for (int y = 0; y < height; ++y) {
        blurLine(&alpha[at(0, y)], &across[at(0, y)], width, 1, weights);
    }
    for (int x = 0; x < width; ++x) {
        blurLine(&across[at(x, 0)], &alpha[at(x, 0)], height, width, weights);
    }
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const auto a = static_cast<int>(std::lround(alpha[at(x, y)]));
            line[x] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), a));
        }
    }
}

ShadowCache::Shadow make(const ShadowCaster& caster, double radius, const QColor& color, double pixelsPerPoint) {
    const double coarseness = std::max(1.0, std::floor(radius * pixelsPerPoint / coarsest));
    const double scale = pixelsPerPoint / coarseness;
    const double margin = shadowReach(radius) + 1 / scale;
    const QRectF wanted = caster.boundingRect().adjusted(-margin, -margin, margin, margin);
    const QSize pixels(static_cast<int>(std::ceil(wanted.width() * scale)),
                       static_cast<int>(std::ceil(wanted.height() * scale)));
    ShadowCache::Shadow shadow;
    shadow.rect = QRectF(wanted.topLeft(), QSizeF(pixels) / scale);
    shadow.image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    shadow.image.fill(Qt::transparent);
    QPainter painter(&shadow.image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.scale(scale, scale);
    painter.translate(-wanted.topLeft());
    if (!caster.picture.isNull()) {
        painter.setTransform(flipped(caster.pictureRect.translated(0, 0)), true);
        painter.drawImage(QRectF({}, caster.pictureRect.size()), caster.picture);
    } else if (caster.strokeWidth > 0) {
        painter.strokePath(caster.path, QPen(Qt::black, caster.strokeWidth, Qt::SolidLine, caster.cap, Qt::MiterJoin));
    } else {
        painter.fillPath(caster.path, Qt::black);
    }
    painter.end();
    blur(shadow.image, radius * scale, color);
    return shadow;
}

} // namespace

QRectF ShadowCaster::boundingRect() const {
    if (!picture.isNull()) {
        return pictureRect;
    }
    return path.boundingRect().adjusted(-strokeWidth, -strokeWidth, strokeWidth, strokeWidth);
}

bool ShadowCaster::sameAs(const ShadowCaster& other) const {
    return strokeWidth == other.strokeWidth && cap == other.cap && picture.isNull() == other.picture.isNull() &&
           (picture.isNull() ? path == other.path
                             : picture.cacheKey() == other.picture.cacheKey() && pictureRect == other.pictureRect);
}

const ShadowCache::Shadow& ShadowCache::shadow(const ShadowCaster& caster, double radius, const QColor& color,
                                               double pixelsPerPoint) {
    const QRgb opaque = color.rgb();
    const auto known = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.radius == radius && entry.pixelsPerPoint == pixelsPerPoint && entry.color == opaque &&
               entry.caster.sameAs(caster);
    });
    if (known != entries_.end()) {
        std::rotate(known, known + 1, entries_.end());
        return entries_.back().shadow;
    }
    ++blurred_;
    if (entries_.size() == cacheSize) {
        entries_.erase(entries_.begin());
    }
    entries_.push_back({caster, radius, pixelsPerPoint, opaque, make(caster, radius, color, pixelsPerPoint)});
    return entries_.back().shadow;
}

} // namespace rb
