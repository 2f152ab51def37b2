#include "helpers/capture/ScreenPixels.h"

#include "desktops/linux/XConnection.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace rb {

namespace {

constexpr std::uint8_t translucentDepth = 32;

std::uint32_t redMask(const xcb_screen_t& screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0; xcb_visualtype_next(&visual)) {
            if (visual.data->visual_id == screen.root_visual) {
                return visual.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR ? visual.data->red_mask : 0;
            }
        }
    }
    return 0;
}

QImage::Format formatOf(std::uint8_t depth, std::uint32_t red) {
    if (depth == 24 && red == 0xff0000) {
        return QImage::Format_RGB32;
    }
    if (depth == translucentDepth && red == 0xff0000) {
        return QImage::Format_ARGB32_Premultiplied;
    }
    if (depth == 30) {
        return red == 0x3ff ? QImage::Format_BGR30 : QImage::Format_RGB30;
    }
    if (depth == 16 && red == 0xf800) {
        return QImage::Format_RGB16;
    }
    return QImage::Format_Invalid;
}

} // namespace

std::optional<ScreenPixels> ScreenPixels::of(XConnection& connection) {
    xcb_connection_t* x = connection.get();
    const xcb_setup_t* setup = xcb_get_setup(x);
    constexpr int ours =
        std::endian::native == std::endian::little ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
    if (setup->image_byte_order != ours) {
        return std::nullopt;
    }
    for (auto screen = xcb_setup_roots_iterator(setup); screen.rem > 0; xcb_screen_next(&screen)) {
        if (screen.data->root != connection.root()) {
            continue;
        }
        const QImage::Format format = formatOf(screen.data->root_depth, redMask(*screen.data));
        // The setup's size is from the time of the connection, which is now.
        const XReply<xcb_get_geometry_reply_t> size(
            xcb_get_geometry_reply(x, xcb_get_geometry(x, connection.root()), nullptr));
        if (format != QImage::Format_Invalid && size) {
            return ScreenPixels(connection, format, screen.data->root_depth, {0, 0, size->width, size->height});
        }
    }
    return std::nullopt;
}

QImage ScreenPixels::fetch(xcb_drawable_t drawable, const PixelRect& part, QImage::Format format) const {
    if (isEmpty(part)) {
        return {};
    }
    xcb_connection_t* x = connection_.get();
    const XReply<xcb_get_image_reply_t> reply(
        xcb_get_image_reply(x,
                            xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, static_cast<std::int16_t>(part.x),
                                          static_cast<std::int16_t>(part.y), static_cast<std::uint16_t>(part.width),
                                          static_cast<std::uint16_t>(part.height), UINT32_MAX),
                            nullptr));
    QImage image(part.width, part.height, format);
    if (!reply || image.isNull() || xcb_get_image_data_length(reply.get()) != image.sizeInBytes()) {
        return {};
    }
    std::memcpy(image.bits(), xcb_get_image_data(reply.get()), static_cast<std::size_t>(image.sizeInBytes()));
    return image;
}

QImage ScreenPixels::read(xcb_drawable_t drawable, const PixelRect& part) const {
    QImage image = fetch(drawable, part, format_);
    // The bits beside the colours may be anything on a screen of 32 bits.
    if (format_ == QImage::Format_ARGB32_Premultiplied) {
        image.reinterpretAsFormat(QImage::Format_RGB32);
    }
    return image.convertToFormat(QImage::Format_RGB32);
}

QImage ScreenPixels::readWindow(xcb_window_t window, const PixelRect& part) const {
    xcb_connection_t* x = connection_.get();
    const XReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(x, xcb_get_geometry(x, window), nullptr));
    if (geometry && geometry->depth == translucentDepth) {
        return fetch(window, part, QImage::Format_ARGB32_Premultiplied);
    }
    return geometry && geometry->depth == depth_ ? read(window, part) : QImage();
}

void ScreenPixels::write(xcb_drawable_t drawable, xcb_gcontext_t context, PixelPoint at, const QImage& image) const {
    const QImage theirs = image.convertToFormat(format_);
    if (theirs.isNull()) {
        return;
    }
    // In strips that fit into the smallest request that every server takes.
    constexpr qsizetype mostBytes = 200'000;
    const int rows = static_cast<int>(std::max<qsizetype>(1, mostBytes / theirs.bytesPerLine()));
    for (int y = 0; y < theirs.height(); y += rows) {
        const int height = std::min(rows, theirs.height() - y);
        xcb_put_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, context,
                      static_cast<std::uint16_t>(theirs.width()), static_cast<std::uint16_t>(height),
                      static_cast<std::int16_t>(at.x), static_cast<std::int16_t>(at.y + y), 0, depth_,
                      static_cast<std::uint32_t>(theirs.bytesPerLine() * height), theirs.constScanLine(y));
    }
}

std::uint32_t ScreenPixels::pixel(QRgb colour) const {
    QImage one(1, 1, QImage::Format_RGB32);
    one.fill(colour);
    const QImage theirs = one.convertToFormat(format_);
    std::uint32_t value = 0;
    std::memcpy(&value, theirs.constBits(), static_cast<std::size_t>(theirs.depth()) / 8);
    return value;
}

} // namespace rb
