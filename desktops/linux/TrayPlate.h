#pragma once

#include "desktops/linux/IconContrast.h"

#include <QImage>
#include <QRect>

#include <array>
#include <cstdint>
#include <optional>
#include <xcb/xcb.h>

// A plate behind tray icons that can't be seen on the bar: other programs' windows can't be recoloured. Main thread.
namespace rb {

struct SeenIcon {
    IconTone tone;
    std::uint8_t depth = 0; // of the window
};
// What stands out from both grounds in that area of a window, in pixels. Nothing while it isn't wholly on the screen,
// and for screens without the usual pixels.
std::optional<SeenIcon> lookAtIcon(xcb_connection_t* x, xcb_window_t window, const QRect& area,
                                   const std::array<QRgb, 2>& grounds);

// The window's background from now on; the picture has its size.
void setBackground(xcb_connection_t* x, xcb_window_t window, std::uint8_t depth, const QImage& picture);

// A picture of that many pixels in the ground's colour with a rounded plate in its middle.
struct PlateLook {
    QSize size;
    QRect plate;
    QColor ground;
    QColor color;
};
QImage plate(const PlateLook& look);

} // namespace rb
