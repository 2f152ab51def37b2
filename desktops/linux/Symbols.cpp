#include "desktops/linux/Symbols.h"

#include "desktops/linux/SymbolStrokes.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <QPixmap>
#include <algorithm>
#include <cmath>
#include <utility>

namespace rb {

namespace {

constexpr std::size_t cacheSize = 64;
constexpr double defaultPointSize = 13;
// A symbol stands a little taller than the capitals beside it.
constexpr double sidePerPoint = 1.25;

// Strokes of heavier symbols are drawn broader; the files hold the regular weight.
double strokeScale(FontWeight weight) {
    switch (weight) {
    case FontWeight::Regular:
        return 1;
    case FontWeight::Medium:
        return 1.12;
    case FontWeight::Semibold:
        return 1.25;
    case FontWeight::Bold:
        return 1.45;
    }
    return 1;
}

// A symbol drawn at build time: the opacity of each pixel as a byte.
QImage prerendered(const QString& base, int pixels) {
    QFile file(base + u'-' + QString::number(pixels) + QStringLiteral(".alpha"));
    if (!file.open(QIODevice::ReadOnly) || file.size() != qint64{pixels} * pixels) {
        return {};
    }
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < pixels; ++y) {
        const QByteArray row = file.read(pixels);
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::transform(row.begin(), row.end(), line,
                       [](char opacity) { return qRgba(0, 0, 0, static_cast<unsigned char>(opacity)); });
    }
    return image;
}

} // namespace

Symbols::Symbols(QString folder)
    : folder_(std::move(folder)) {}

double Symbols::sideFor(double pointSize) {
    return std::round(pointSize * sidePerPoint);
}

bool Symbols::contains(const std::string& name) const {
    return !name.empty() && QFile::exists(folder_ + u'/' + QString::fromStdString(name) + QStringLiteral(".svg"));
}

Size Symbols::size(const Symbol& symbol) const {
    if (!contains(symbol.name)) {
        return {};
    }
    const double side = sideFor(symbol.pointSize > 0 ? symbol.pointSize : defaultPointSize);
    return {side, side};
}

QImage Symbols::shape(const QString& name, int pixels, FontWeight weight) const {
    const QString base = folder_ + u'/' + name;
    if (weight == FontWeight::Regular || weight == FontWeight::Semibold) {
        const QString suffix = weight == FontWeight::Semibold ? QStringLiteral("-semibold") : QString();
        if (QImage stored = prerendered(base + suffix, pixels); !stored.isNull()) {
            return stored;
        }
    }
    QFile file(base + QStringLiteral(".svg"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QByteArray drawing = file.readAll();
    if (weight != FontWeight::Regular) {
        drawing = withStrokes(drawing, strokeScale(weight));
    }
    QBuffer buffer(&drawing);
    QImageReader reader(&buffer, "svg");
    reader.setScaledSize({pixels, pixels});
    return reader.read();
}

QImage Symbols::image(const Symbol& symbol, int pixels, const QColor& foreground) {
    QColor color = foreground;
    if (symbol.tint) {
        color = QColor::fromRgbF(static_cast<float>(symbol.tint->red), static_cast<float>(symbol.tint->green),
                                 static_cast<float>(symbol.tint->blue), static_cast<float>(symbol.tint->alpha));
    }
    const QRgb rgba = color.rgba();
    const auto known = std::find_if(cache_.begin(), cache_.end(), [&](const Entry& entry) {
        return entry.pixels == pixels && entry.color == rgba && entry.weight == symbol.weight &&
               entry.name == symbol.name;
    });
    if (known != cache_.end()) {
        std::rotate(known, known + 1, cache_.end());
        return cache_.back().image;
    }
    QImage image = shape(QString::fromStdString(symbol.name), pixels, symbol.weight)
                       .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return {};
    }
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    if (cache_.size() == cacheSize) {
        cache_.erase(cache_.begin());
    }
    cache_.push_back({symbol.name, pixels, symbol.weight, rgba, image});
    return image;
}

QIcon Symbols::icon(const Symbol& symbol, double side, const QColor& foreground) {
    QIcon icon;
    for (const int scale : {1, 2}) {
        const QImage picture = image(symbol, static_cast<int>(std::ceil(side)) * scale, foreground);
        if (!picture.isNull()) {
            QPixmap pixmap = QPixmap::fromImage(picture);
            pixmap.setDevicePixelRatio(scale);
            icon.addPixmap(pixmap);
        }
    }
    return icon;
}

} // namespace rb
