#include "desktops/linux/WindowShape.h"

#include "desktops/linux/QtX11.h"

#include <QImage>
#include <QWidget>
#include <algorithm>
#include <cstdint>
#include <vector>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace rb {

namespace {

xcb_window_t idOf(const QWidget& window) {
    return static_cast<xcb_window_t>(window.internalWinId());
}

xcb_rectangle_t rectangle(int x, int y, int width, int height) {
    return {static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
            static_cast<std::uint16_t>(height)};
}

// The opaque pixels in rectangles from the top down and from left to right; equal rows make one band.
std::vector<xcb_rectangle_t> opaqueRectangles(const QImage& picture) {
    std::vector<xcb_rectangle_t> all;
    std::size_t band = 0; // where the rectangles of the row above begin
    for (int y = 0; y < picture.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        const std::size_t row = all.size();
        for (int x = 0; x < picture.width();) {
            const auto seen = [](QRgb pixel) { return qAlpha(pixel) != 0; };
            const auto* begin = std::find_if(line + x, line + picture.width(), seen);
            const auto* end = std::find_if_not(begin, line + picture.width(), seen);
            if (begin != end) {
                all.push_back(rectangle(static_cast<int>(begin - line), y, static_cast<int>(end - begin), 1));
            }
            x = static_cast<int>(end - line);
        }
        const auto same = [](const xcb_rectangle_t& a, const xcb_rectangle_t& b) {
            return a.x == b.x && a.width == b.width;
        };
        const auto above = all.begin() + static_cast<std::ptrdiff_t>(band);
        const auto here = all.begin() + static_cast<std::ptrdiff_t>(row);
        if (row > band && all[band].y + all[band].height == y && std::equal(above, here, here, all.end(), same)) {
            std::for_each(above, here, [](xcb_rectangle_t& grown) { ++grown.height; });
            all.resize(row);
        } else {
            band = row;
        }
    }
    return all;
}

} // namespace

void setInputRegion(QWidget& window, const QRegion& region) {
    if (xcb_connection_t* x = qtConnection()) {
        const double scale = window.devicePixelRatioF();
        std::vector<xcb_rectangle_t> taken;
        taken.reserve(static_cast<std::size_t>(region.rectCount()));
        for (const QRect& part : region) {
            const QRect pixels = QRectF(QPointF(part.topLeft()) * scale, QSizeF(part.size()) * scale).toAlignedRect();
            taken.push_back(rectangle(pixels.x(), pixels.y(), pixels.width(), pixels.height()));
        }
        xcb_shape_rectangles(x, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, idOf(window), 0, 0,
                             static_cast<std::uint32_t>(taken.size()), taken.data());
    }
}

void setShape(QWidget& window, const QImage& picture) {
    if (xcb_connection_t* x = qtConnection()) {
        const auto rectangles = opaqueRectangles(picture);
        xcb_shape_rectangles(x, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_YX_BANDED, idOf(window), 0,
                             0, static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
    }
}

void removeShape(QWidget& window) {
    if (xcb_connection_t* x = qtConnection()) {
        xcb_shape_mask(x, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, idOf(window), 0, 0, XCB_PIXMAP_NONE);
    }
}

void makeOpaque(QImage& picture, const QRect& pixels) {
    const QRect area = pixels & QRect({}, picture.size());
    for (int y = area.top(); y <= area.bottom(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = area.left(); x <= area.right(); ++x) {
            line[x] = qAlpha(line[x]) < 128 ? 0 : qUnpremultiply(line[x]) | 0xFF000000U;
        }
    }
}

} // namespace rb
