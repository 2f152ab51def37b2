#include "helpers/capture/ChooserLook.h"

#include "desktops/linux/XConnection.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

// In points.
constexpr double textSize = 13;
constexpr double pillHeight = 26;
constexpr double pillPadding = 11;
constexpr double hintHeight = 36;
constexpr double hintPadding = 16;
constexpr double betweenHints = 18;
constexpr double capHeight = 20;
constexpr double capPadding = 7;
constexpr double capToWords = 6;

const QColor pillColour(24, 24, 26, 222);
const QColor pillRim(255, 255, 255, 46);
const QColor capColour(255, 255, 255, 44);
const QColor textColour(255, 255, 255, 242);

QFont textFont(double ratio) {
    QFont font = QGuiApplication::font();
    font.setPixelSize(static_cast<int>(std::lround(textSize * ratio)));
    return font;
}

QImage pill(int width, int height, double ratio) {
    QImage picture(width, height, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(pillRim, std::max(1.0, ratio)));
    painter.setBrush(pillColour);
    const double half = std::max(1.0, ratio) / 2;
    const QRectF inside = QRectF(picture.rect()).adjusted(half, half, -half, -half);
    painter.drawRoundedRect(inside, inside.height() / 2, inside.height() / 2);
    return picture;
}

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

// Black on white and white on black must be seen: every black line has a white one around it.
CursorDrawing drawing(int side, QPoint spot, const QPainterPath& black, const QPainterPath& shape) {
    CursorDrawing made{.black = QImage(side, side, QImage::Format_MonoLSB),
                       .shape = QImage(side, side, QImage::Format_MonoLSB),
                       .spot = spot};
    for (const auto& [image, path] : {std::pair(&made.black, &black), std::pair(&made.shape, &shape)}) {
        image->setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)}); // a set bit is black
        image->fill(0);
        QPainter painter(image);
        painter.fillPath(*path, Qt::black);
    }
    return made;
}

} // namespace

QImage labelPicture(const std::string& text, double ratio) {
    const QFont font = textFont(ratio);
    const QString words = QString::fromStdString(text);
    const int width = QFontMetrics(font).horizontalAdvance(words) + rounded(2 * pillPadding * ratio);
    QImage picture = pill(width, rounded(pillHeight * ratio), ratio);
    QPainter painter(&picture);
    painter.setFont(font);
    painter.setPen(textColour);
    painter.drawText(picture.rect(), Qt::AlignCenter, words);
    return picture;
}

QImage hintPicture(const std::vector<ChooserHint>& hints, double ratio) {
    const QFont font = textFont(ratio);
    const QFontMetrics metrics(font);
    const auto capWidth = [&](const ChooserHint& hint) {
        return hint.key.isEmpty() ? 0.0 : metrics.horizontalAdvance(hint.key) + 2 * capPadding * ratio;
    };
    double width = 2 * hintPadding * ratio;
    for (const ChooserHint& hint : hints) {
        width += capWidth(hint) + (hint.key.isEmpty() ? 0 : capToWords * ratio) + metrics.horizontalAdvance(hint.words);
        width += &hint == &hints.back() ? 0 : betweenHints * ratio;
    }
    QImage picture = pill(static_cast<int>(std::ceil(width)), rounded(hintHeight * ratio), ratio);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font);
    double x = hintPadding * ratio;
    const double height = picture.height();
    for (const ChooserHint& hint : hints) {
        if (!hint.key.isEmpty()) {
            const QRectF cap(x, (height - capHeight * ratio) / 2, capWidth(hint), capHeight * ratio);
            painter.setPen(Qt::NoPen);
            painter.setBrush(capColour);
            painter.drawRoundedRect(cap, 5 * ratio, 5 * ratio);
            painter.setPen(textColour);
            painter.drawText(cap, Qt::AlignCenter, hint.key);
            x += cap.width() + capToWords * ratio;
        }
        const double words = metrics.horizontalAdvance(hint.words);
        painter.setPen(textColour);
        painter.drawText(QRectF(x, 0, words + 1, height), Qt::AlignVCenter | Qt::AlignLeft, hint.words);
        x += words + betweenHints * ratio;
    }
    return picture;
}

QImage dimmed(const QImage& picture) {
    constexpr std::uint32_t light = 128; // of 256
    constexpr std::uint32_t redAndBlue = 0xff00ff;
    constexpr std::uint32_t green = 0x00ff00;
    QImage dark(picture.size(), QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
        const auto* from = reinterpret_cast<const std::uint32_t*>(picture.constScanLine(y));
        auto* to = reinterpret_cast<std::uint32_t*>(dark.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            to[x] = 0xff000000 | (((from[x] & redAndBlue) * light >> 8) & redAndBlue) |
                    (((from[x] & green) * light >> 8) & green);
        }
    }
    return dark;
}

CursorDrawing crosshairDrawing(double ratio) {
    const int unit = std::max(1, rounded(ratio));
    const int arm = 12 * unit;
    const int side = 2 * arm + 3 * unit;
    const int middle = arm + unit; // the left of the middle line
    QPainterPath black;
    QPainterPath shape;
    black.addRect(middle, unit, unit, side - 2 * unit);
    black.addRect(unit, middle, side - 2 * unit, unit);
    shape.addRect(middle - unit, 0, 3 * unit, side);
    shape.addRect(0, middle - unit, side, 3 * unit);
    shape.setFillRule(Qt::WindingFill);
    black.setFillRule(Qt::WindingFill);
    return drawing(side, {middle + unit / 2, middle + unit / 2}, black, shape);
}

CursorDrawing cameraDrawing(double ratio) {
    const int unit = std::max(1, rounded(ratio));
    const int side = 29 * unit;
    const auto box = [unit](double x, double y, double width, double height) {
        return QRectF(x * unit, y * unit, width * unit, height * unit);
    };
    QPainterPath body;
    body.setFillRule(Qt::WindingFill);
    body.addRoundedRect(box(2, 8, 25, 17), 3 * unit, 3 * unit);
    body.addRoundedRect(box(9, 4, 11, 6), 2 * unit, 2 * unit);
    QPainterPath rim;
    rim.setFillRule(Qt::WindingFill);
    rim.addRoundedRect(box(1, 7, 27, 19), 4 * unit, 4 * unit);
    rim.addRoundedRect(box(8, 3, 13, 8), 3 * unit, 3 * unit);
    QPainterPath lens;
    lens.addEllipse(box(9, 11, 11, 11));
    QPainterPath glass;
    glass.addEllipse(box(12, 14, 5, 5));
    return drawing(side, {side / 2, rounded(16.5 * unit)}, body.subtracted(lens).united(glass), rim);
}

xcb_cursor_t makeCursor(XConnection& connection, const CursorDrawing& drawing) {
    xcb_connection_t* x = connection.get();
    const xcb_setup_t* setup = xcb_get_setup(x);
    const bool mostFirst = setup->bitmap_format_bit_order == XCB_IMAGE_ORDER_MSB_FIRST;
    const auto pixmapOf = [&](const QImage& bits) {
        const QImage theirs = mostFirst ? bits.convertToFormat(QImage::Format_Mono) : bits;
        const auto width = static_cast<std::uint16_t>(theirs.width());
        const auto height = static_cast<std::uint16_t>(theirs.height());
        const xcb_pixmap_t pixmap = xcb_generate_id(x);
        xcb_create_pixmap(x, 1, pixmap, connection.root(), width, height);
        const xcb_gcontext_t context = xcb_generate_id(x);
        const std::uint32_t values[] = {1, 0};
        xcb_create_gc(x, context, pixmap, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND, values);
        // Lines are padded to 32 bits on both sides.
        xcb_put_image(x, XCB_IMAGE_FORMAT_XY_BITMAP, pixmap, context, width, height, 0, 0, 0, 1,
                      static_cast<std::uint32_t>(theirs.sizeInBytes()), theirs.constBits());
        xcb_free_gc(x, context);
        return pixmap;
    };
    const xcb_pixmap_t black = pixmapOf(drawing.black);
    const xcb_pixmap_t shape = pixmapOf(drawing.shape);
    const xcb_cursor_t cursor = xcb_generate_id(x);
    constexpr std::uint16_t full = 0xffff;
    xcb_create_cursor(x, cursor, black, shape, 0, 0, 0, full, full, full, static_cast<std::uint16_t>(drawing.spot.x()),
                      static_cast<std::uint16_t>(drawing.spot.y()));
    xcb_free_pixmap(x, black);
    xcb_free_pixmap(x, shape);
    return cursor;
}

} // namespace rb
