#pragma once

#include "helpers/capture/Pixels.h"

#include <QImage>
#include <optional>
#include <xcb/xcb.h>

namespace rb {

class XConnection;

// Pictures between the X server and Qt. Main thread only.
class ScreenPixels {
public:
    // Nothing when the server's pixels are of a kind that isn't known here (palettes, another byte order).
    static std::optional<ScreenPixels> of(XConnection& connection);

    // The whole of the X screen.
    const PixelRect& bounds() const { return bounds_; }
    std::uint8_t depth() const { return depth_; }

    // A part of the root window or of a pixmap of its depth; null when the server refuses.
    QImage read(xcb_drawable_t drawable, const PixelRect& part) const;
    // A window's own contents, of its own depth, translucent where the window is. Null when the server refuses.
    QImage readWindow(xcb_window_t window, const PixelRect& part) const;
    // Onto a pixmap of the root window's depth.
    void write(xcb_drawable_t drawable, xcb_gcontext_t context, PixelPoint at, const QImage& image) const;
    // The value of a pixel of that colour.
    std::uint32_t pixel(QRgb colour) const;

private:
    ScreenPixels(XConnection& connection, QImage::Format format, std::uint8_t depth, const PixelRect& bounds)
        : connection_(connection)
        , format_(format)
        , depth_(depth)
        , bounds_(bounds) {}
    QImage fetch(xcb_drawable_t drawable, const PixelRect& part, QImage::Format format) const;

    XConnection& connection_;
    QImage::Format format_;
    std::uint8_t depth_;
    PixelRect bounds_;
};

} // namespace rb
