#include "helpers/capture/WindowPlaces.h"

#include "desktops/linux/XConnection.h"

#include <string>
#include <xcb/shape.h>

namespace rb {

namespace {

constexpr int deepestFrame = 4;   // windows of a window manager around a program's own
constexpr int leastSide = 8;      // pixels; what is smaller is nobody's window
constexpr int widestShadow = 256; // pixels on a side

std::vector<xcb_window_t> childrenOf(xcb_connection_t* x, xcb_window_t window) {
    const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(x, xcb_query_tree(x, window), nullptr));
    if (!tree) {
        return {};
    }
    const xcb_window_t* first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

// The window inside a frame that a program made; XCB_WINDOW_NONE when there is none.
xcb_window_t clientIn(XConnection& connection, xcb_window_t window, int depth) {
    if (!connection.cardinals(window, connection.atom("WM_STATE")).empty()) {
        return window;
    }
    if (depth == 0) {
        return XCB_WINDOW_NONE;
    }
    for (const xcb_window_t child : childrenOf(connection.get(), window)) {
        if (const xcb_window_t found = clientIn(connection, child, depth - 1); found != XCB_WINDOW_NONE) {
            return found;
        }
    }
    return XCB_WINDOW_NONE;
}

std::vector<PixelRect> inputOf(XConnection& connection, const WindowPlace& place) {
    xcb_connection_t* x = connection.get();
    const xcb_query_extension_reply_t* shape = xcb_get_extension_data(x, &xcb_shape_id);
    if (shape == nullptr || shape->present == 0) {
        return {place.area};
    }
    const XReply<xcb_shape_get_rectangles_reply_t> reply(
        xcb_shape_get_rectangles_reply(x, xcb_shape_get_rectangles(x, place.window, XCB_SHAPE_SK_INPUT), nullptr));
    if (!reply) {
        return {place.area};
    }
    std::vector<PixelRect> areas;
    const xcb_rectangle_t* rectangles = xcb_shape_get_rectangles_rectangles(reply.get());
    for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(reply.get()); ++i) {
        const PixelRect area{place.frame.x + place.border + rectangles[i].x,
                             place.frame.y + place.border + rectangles[i].y, rectangles[i].width, rectangles[i].height};
        if (const PixelRect inside = intersection(area, place.area); !isEmpty(inside)) {
            areas.push_back(inside);
        }
    }
    return areas;
}

// Without the shadow, where the program says that it draws one around its window.
PixelRect withoutShadow(XConnection& connection, const WindowPlace& place) {
    const auto extents = connection.cardinals(place.client, connection.atom("_GTK_FRAME_EXTENTS"));
    if (extents.size() != 4 ||
        std::any_of(extents.begin(), extents.end(), [](std::uint32_t side) { return side > widestShadow; })) {
        return place.frame;
    }
    const PixelRect area{place.frame.x + static_cast<int>(extents[0]), place.frame.y + static_cast<int>(extents[2]),
                         place.frame.width - static_cast<int>(extents[0] + extents[1]),
                         place.frame.height - static_cast<int>(extents[2] + extents[3])};
    return isEmpty(area) ? place.frame : area;
}

bool isDesktop(XConnection& connection, xcb_window_t client) {
    const auto types = connection.cardinals(client, connection.atom("_NET_WM_WINDOW_TYPE"));
    return std::find(types.begin(), types.end(), connection.atom("_NET_WM_WINDOW_TYPE_DESKTOP")) != types.end();
}

} // namespace

std::vector<WindowPlace> readWindowPlaces(XConnection& connection, xcb_window_t own) {
    xcb_connection_t* x = connection.get();
    const std::vector<xcb_window_t> children = childrenOf(x, connection.root());
    std::vector<xcb_get_window_attributes_cookie_t> attributeCookies;
    std::vector<xcb_get_geometry_cookie_t> geometryCookies;
    attributeCookies.reserve(children.size());
    geometryCookies.reserve(children.size());
    for (const xcb_window_t child : children) {
        attributeCookies.push_back(xcb_get_window_attributes(x, child));
        geometryCookies.push_back(xcb_get_geometry(x, child));
    }
    std::vector<WindowPlace> places;
    for (std::size_t i = children.size(); i-- > 0;) {
        const XReply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(x, attributeCookies[i], nullptr));
        const XReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(x, geometryCookies[i], nullptr));
        if (!attributes || !geometry || children[i] == own || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) {
            continue;
        }
        WindowPlace place{.window = children[i], .client = clientIn(connection, children[i], deepestFrame)};
        place.client = place.client == XCB_WINDOW_NONE ? place.window : place.client;
        place.border = geometry->border_width;
        place.frame = {geometry->x, geometry->y, geometry->width + 2 * place.border,
                       geometry->height + 2 * place.border};
        if (place.frame.width < leastSide || place.frame.height < leastSide || isDesktop(connection, place.client)) {
            continue;
        }
        place.area = withoutShadow(connection, place);
        place.input = inputOf(connection, place);
        places.push_back(std::move(place));
    }
    return places;
}

const WindowPlace* windowAt(const std::vector<WindowPlace>& windows, PixelPoint place) {
    for (const WindowPlace& window : windows) {
        if (std::any_of(window.input.begin(), window.input.end(),
                        [place](const PixelRect& area) { return contains(area, place); })) {
            return &window;
        }
    }
    return nullptr;
}

bool isCovered(const std::vector<WindowPlace>& windows, const WindowPlace& window, const PixelRect& screen) {
    if (!(intersection(window.area, screen) == window.area)) {
        return true;
    }
    for (const WindowPlace& above : windows) {
        if (above.window == window.window) {
            break;
        }
        if (!isEmpty(intersection(above.frame, window.area))) {
            return true;
        }
    }
    return false;
}

const WindowPlace* activeWindow(XConnection& connection, const std::vector<WindowPlace>& windows) {
    const auto active = connection.cardinals(connection.root(), connection.atom("_NET_ACTIVE_WINDOW"));
    if (active.empty() || active.front() == XCB_WINDOW_NONE) {
        return nullptr;
    }
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [&](const WindowPlace& place) { return place.client == active.front(); });
    return found == windows.end() ? nullptr : &*found;
}

bool isComposed(XConnection& connection) {
    const std::string name = "_NET_WM_CM_S" + std::to_string(connection.screenNumber());
    const auto cookie = xcb_get_selection_owner(connection.get(), connection.atom(name));
    const XReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection.get(), cookie, nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace rb
