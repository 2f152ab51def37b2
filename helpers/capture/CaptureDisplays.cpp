#include "helpers/capture/CaptureDisplays.h"

#include "desktops/linux/XConnection.h"

#include <QGuiApplication>
#include <QScreen>

#include <xcb/randr.h>

namespace rb {

namespace {

std::string atomName(xcb_connection_t* x, xcb_atom_t atom) {
    const XReply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(x, xcb_get_atom_name(x, atom), nullptr));
    if (!reply) {
        return {};
    }
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

} // namespace

std::vector<CaptureDisplay> readDisplays(XConnection& connection) {
    xcb_connection_t* x = connection.get();
    std::vector<CaptureDisplay> displays;
    const xcb_query_extension_reply_t* randr = xcb_get_extension_data(x, &xcb_randr_id);
    if (randr != nullptr && randr->present != 0) {
        const XReply<xcb_randr_get_monitors_reply_t> monitors(
            xcb_randr_get_monitors_reply(x, xcb_randr_get_monitors(x, connection.root(), 1), nullptr));
        for (auto monitor = monitors ? xcb_randr_get_monitors_monitors_iterator(monitors.get())
                                     : xcb_randr_monitor_info_iterator_t{};
             monitor.rem > 0; xcb_randr_monitor_info_next(&monitor)) {
            const xcb_randr_monitor_info_t& info = *monitor.data;
            if (info.width > 0 && info.height > 0) {
                displays.push_back({.name = atomName(x, info.name),
                                    .pixels = {info.x, info.y, info.width, info.height},
                                    .primary = info.primary != 0});
            }
        }
    }
    if (displays.empty()) {
        const XReply<xcb_get_geometry_reply_t> whole(
            xcb_get_geometry_reply(x, xcb_get_geometry(x, connection.root()), nullptr));
        displays.push_back({.pixels = {0, 0, whole ? whole->width : 0, whole ? whole->height : 0}});
    }
    const bool named =
        std::any_of(displays.begin(), displays.end(), [](const CaptureDisplay& display) { return display.primary; });
    displays.front().primary = displays.front().primary || !named;
    return displays;
}

void takeRatiosFromQt(std::vector<CaptureDisplay>& displays) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        // A screen's corner is the same in pixels and in points.
        const QPoint corner = screen->geometry().topLeft();
        for (CaptureDisplay& display : displays) {
            if (display.pixels.x == corner.x() && display.pixels.y == corner.y()) {
                display.ratio = screen->devicePixelRatio();
                if (screen == QGuiApplication::primaryScreen()) {
                    for (CaptureDisplay& other : displays) {
                        other.primary = &other == &display;
                    }
                }
                break;
            }
        }
    }
}

const CaptureDisplay& displayAt(const std::vector<CaptureDisplay>& displays, PixelPoint place) {
    const CaptureDisplay* primary = &displays.front();
    for (const CaptureDisplay& display : displays) {
        if (contains(display.pixels, place)) {
            return display;
        }
        primary = display.primary ? &display : primary;
    }
    return *primary;
}

PixelRect unionOf(const std::vector<CaptureDisplay>& displays) {
    PixelRect all;
    for (const CaptureDisplay& display : displays) {
        all = united(all, display.pixels);
    }
    return all;
}

Rect pointsOf(const PixelRect& rect, const std::vector<CaptureDisplay>& displays) {
    const CaptureDisplay& own = displayAt(displays, {rect.x + rect.width / 2, rect.y + rect.height / 2});
    PixelPoint origin;
    for (const CaptureDisplay& display : displays) {
        if (display.primary) {
            origin = {display.pixels.x, display.pixels.y};
        }
    }
    return {own.pixels.x - origin.x + (rect.x - own.pixels.x) / own.ratio,
            own.pixels.y - origin.y + (rect.y - own.pixels.y) / own.ratio, rect.width / own.ratio,
            rect.height / own.ratio};
}

bool belongsToWayland(const std::vector<CaptureDisplay>& displays) {
    return std::any_of(displays.begin(), displays.end(),
                       [](const CaptureDisplay& display) { return display.name.starts_with("XWAYLAND"); });
}

} // namespace rb
