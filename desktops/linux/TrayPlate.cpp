#include "desktops/linux/TrayPlate.h"

#include "desktops/linux/XConnection.h"

#include <QPainter>

#include <cstring>

namespace rb {

namespace {

constexpr double cornerShare = 0.25; // of the plate's height
constexpr QRgb colorBits = 0xFFFFFF;

} // namespace

std::optional<SeenIcon> lookAtIcon(xcb_connection_t* x, xcb_window_t window, const QRect& area,
                                   const std::array<QRgb, 2>& grounds) {
    const auto pixels = static_cast<std::uint32_t>(area.width()) * static_cast<std::uint32_t>(area.height());
    const XReply<xcb_get_image_reply_t> image(xcb_get_image_reply(
        x,
        xcb_get_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, window, static_cast<std::int16_t>(area.left()),
                      static_cast<std::int16_t>(area.top()), static_cast<std::uint16_t>(area.width()),
                      static_cast<std::uint16_t>(area.height()), ~0U),
        nullptr));
    if (!image || (image->depth != 24 && image->depth != 32) || image->length != pixels ||
        xcb_get_setup(x)->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) {
        return std::nullopt;
    }
    QImage icon(area.size(), QImage::Format_ARGB32);
    std::memcpy(icon.bits(), xcb_get_image_data(image.get()), std::size_t{pixels} * 4);
    for (int row = 0; row < icon.height(); ++row) {
        auto* line = reinterpret_cast<QRgb*>(icon.scanLine(row));
        for (int column = 0; column < icon.width(); ++column) {
            const QRgb color = line[column] & colorBits;
            const bool isGround = color == (grounds[0] & colorBits) || color == (grounds[1] & colorBits);
            line[column] = isGround ? 0 : color | ~colorBits;
        }
    }
    return SeenIcon{toneOf(icon), image->depth};
}

void setBackground(xcb_connection_t* x, xcb_window_t window, std::uint8_t depth, const QImage& picture) {
    const QImage pixels = picture.convertToFormat(QImage::Format_RGB32);
    const auto width = static_cast<std::uint16_t>(pixels.width());
    const auto height = static_cast<std::uint16_t>(pixels.height());
    const xcb_pixmap_t pixmap = xcb_generate_id(x);
    const xcb_gcontext_t context = xcb_generate_id(x);
    xcb_create_pixmap(x, depth, pixmap, window, width, height);
    xcb_create_gc(x, context, pixmap, 0, nullptr);
    xcb_put_image(x, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, height, 0, 0, 0, depth,
                  static_cast<std::uint32_t>(pixels.sizeInBytes()), pixels.constBits());
    xcb_change_window_attributes(x, window, XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_free_gc(x, context);
    xcb_free_pixmap(x, pixmap);
}

QImage plate(const PlateLook& look) {
    QImage image(look.size, QImage::Format_RGB32);
    image.fill(look.ground);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.color);
    const double radius = look.plate.height() * cornerShare;
    painter.drawRoundedRect(look.plate, radius, radius);
    return image;
}

} // namespace rb
