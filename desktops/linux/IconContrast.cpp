#include "desktops/linux/IconContrast.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

constexpr int faint = 40;               // alpha below which a pixel isn't seen
constexpr int leastChroma = 40;         // between the channels of a pixel with a hue
constexpr double mostlyColorful = 0.08; // a coloured badge is enough to leave an icon alone
constexpr double flat = 0.16;           // spread of a picture in one shade, smooth edges included

double lightnessOf(const QColor& color) {
    return 0.299 * color.redF() + 0.587 * color.greenF() + 0.114 * color.blueF();
}

} // namespace

IconTone toneOf(const QImage& icon) {
    const QImage pixels = icon.convertToFormat(QImage::Format_ARGB32);
    double weight = 0;
    double sum = 0;
    double squares = 0;
    double hued = 0;
    qint64 seen = 0;
    for (int y = 0; y < pixels.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(pixels.constScanLine(y));
        for (int x = 0; x < pixels.width(); ++x) {
            const QRgb pixel = line[x];
            if (qAlpha(pixel) < faint) {
                continue;
            }
            ++seen;
            const double alpha = qAlpha(pixel) / 255.0;
            const double light = lightnessOf(QColor(pixel));
            const auto [low, high] = std::minmax({qRed(pixel), qGreen(pixel), qBlue(pixel)});
            weight += alpha;
            sum += alpha * light;
            squares += alpha * light * light;
            hued += high - low >= leastChroma ? alpha : 0;
        }
    }
    if (weight == 0) {
        return {};
    }
    const double mean = sum / weight;
    return {.covered = static_cast<double>(seen) / (static_cast<double>(pixels.width()) * pixels.height()),
            .lightness = mean,
            .spread = std::sqrt(std::max(0.0, squares / weight - mean * mean)),
            .colorful = hued / weight};
}

bool isHardToSee(const IconTone& tone, const QColor& ground, double least) {
    return tone.covered > 0 && std::abs(tone.lightness - lightnessOf(ground)) < least;
}

QImage readable(const QImage& icon, const QColor& ground, const QColor& foreground) {
    const IconTone tone = toneOf(icon);
    if (!isHardToSee(tone, ground) || tone.colorful > mostlyColorful) {
        return icon;
    }
    QImage changed = icon.convertToFormat(QImage::Format_ARGB32);
    if (tone.spread > flat) {
        changed.invertPixels(QImage::InvertRgb);
        return changed;
    }
    changed = changed.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&changed);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(changed.rect(), foreground);
    return changed;
}

} // namespace rb
