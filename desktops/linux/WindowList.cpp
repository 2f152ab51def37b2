#include "desktops/linux/WindowList.h"

#include "platform/Panels.h"

#include <algorithm>

namespace rb {

namespace {

constexpr int usualLayer = 0;
constexpr std::uint32_t mostTypes = 8;

struct Types {
    xcb_atom_t type;
    xcb_atom_t desktop;
    xcb_atom_t dock;
    std::vector<xcb_atom_t> menus;
};

std::optional<int> layerOf(const xcb_get_property_reply_t& property, const Types& types) {
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(&property));
    const std::size_t count = property.format == 32 ? property.value_len : 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (atoms[i] == types.desktop) {
            return std::nullopt;
        }
        if (std::find(types.menus.begin(), types.menus.end(), atoms[i]) != types.menus.end()) {
            return PopUpMenuWindowLayer;
        }
        if (atoms[i] == types.dock) {
            return StatusWindowLevel;
        }
    }
    return usualLayer;
}

} // namespace

// All at once: the requests for every window go out before the first answer is read.
std::optional<std::vector<int>> LinuxWindowList::layersOnScreen() const {
    xcb_connection_t* x = connection_.get();
    const XReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(x, xcb_query_tree(x, connection_.root()), nullptr));
    if (!tree) {
        return std::nullopt;
    }
    const auto atom = [this](const char* kind) { return connection_.atom(std::string("_NET_WM_WINDOW_TYPE") + kind); };
    const Types types{atom(""),
                      atom("_DESKTOP"),
                      atom("_DOCK"),
                      {atom("_POPUP_MENU"), atom("_DROPDOWN_MENU"), atom("_MENU"), atom("_COMBO")}};
    const xcb_window_t* windows = xcb_query_tree_children(tree.get());
    const auto count = static_cast<std::size_t>(xcb_query_tree_children_length(tree.get()));
    std::vector<xcb_get_window_attributes_cookie_t> attributes;
    std::vector<xcb_get_property_cookie_t> properties;
    for (std::size_t i = 0; i < count; ++i) {
        attributes.push_back(xcb_get_window_attributes(x, windows[i]));
        properties.push_back(xcb_get_property(x, 0, windows[i], types.type, XCB_ATOM_ATOM, 0, mostTypes));
    }
    std::vector<int> layers;
    for (std::size_t i = 0; i < count; ++i) {
        const XReply<xcb_get_window_attributes_reply_t> seen(
            xcb_get_window_attributes_reply(x, attributes[i], nullptr));
        const XReply<xcb_get_property_reply_t> property(xcb_get_property_reply(x, properties[i], nullptr));
        if (!seen || seen->map_state != XCB_MAP_STATE_VIEWABLE || seen->_class == XCB_WINDOW_CLASS_INPUT_ONLY) {
            continue;
        }
        if (const auto layer = property ? layerOf(*property, types) : std::optional(usualLayer)) {
            layers.push_back(*layer);
        }
    }
    connection_.deliverQueuedEvents();
    return layers;
}

} // namespace rb
