#include "tests/session/frame/XClient.h"

#include "tests/session/frame/Wait.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>
#include <xcb/xtest.h>

namespace rb {

namespace {

constexpr std::uint32_t wholeProperty = 1 << 20; // in 32-bit units

XAnswer<xcb_get_property_reply_t> property(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t name) {
    const auto cookie = xcb_get_property(connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, wholeProperty);
    return ownReply(xcb_get_property_reply(connection, cookie, nullptr));
}

std::string bytes(const XAnswer<xcb_get_property_reply_t>& reply) {
    if (!reply || reply->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

} // namespace

XClient::XClient(const std::string& display)
    : connection_(xcb_connect(display.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) {
        xcb_disconnect(connection_);
        throw std::runtime_error("cannot reach the X server " + display);
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

XClient::~XClient() {
    xcb_disconnect(connection_);
}

xcb_atom_t XClient::atom(const std::string& name) const {
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const auto reply = ownReply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : 0;
}

void XClient::sync() const {
    ownReply(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

xcb_timestamp_t XClient::serverTime() const {
    // Changing a property is the one request whose event tells the time.
    const xcb_window_t window = xcb_generate_id(connection_);
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root(), -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(connection_);
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    while (time == XCB_CURRENT_TIME) {
        const auto event = ownReply(xcb_wait_for_event(connection_));
        if (!event) {
            throw std::runtime_error("the X server is gone");
        }
        if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY) {
            time = reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
        }
    }
    xcb_destroy_window(connection_, window);
    return time;
}

std::optional<WindowFacts> XClient::facts(xcb_window_t window) const {
    const auto attributesCookie = xcb_get_window_attributes(connection_, window);
    const auto geometryCookie = xcb_get_geometry(connection_, window);
    const auto placeCookie = xcb_translate_coordinates(connection_, window, root(), 0, 0);
    const auto attributes = ownReply(xcb_get_window_attributes_reply(connection_, attributesCookie, nullptr));
    const auto geometry = ownReply(xcb_get_geometry_reply(connection_, geometryCookie, nullptr));
    const auto place = ownReply(xcb_translate_coordinates_reply(connection_, placeCookie, nullptr));
    if (!attributes || !geometry || !place) {
        return std::nullopt; // gone meanwhile
    }
    WindowFacts facts;
    facts.window = window;
    facts.viewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    facts.overrideRedirect = attributes->override_redirect != 0;
    facts.x = place->dst_x;
    facts.y = place->dst_y;
    facts.width = geometry->width;
    facts.height = geometry->height;
    const std::string names = bytes(property(connection_, window, XCB_ATOM_WM_CLASS));
    facts.instance = names.c_str();
    if (facts.instance.size() + 1 < names.size()) {
        facts.className = names.c_str() + facts.instance.size() + 1;
    }
    facts.title = text(window, "_NET_WM_NAME");
    if (facts.title.empty()) {
        facts.title = bytes(property(connection_, window, XCB_ATOM_WM_NAME));
    }
    for (const std::uint32_t type : cardinals(window, "_NET_WM_WINDOW_TYPE")) {
        const auto name = ownReply(xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, type), nullptr));
        if (name) {
            facts.types.emplace_back(xcb_get_atom_name_name(name.get()),
                                     static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get())));
        }
    }
    return facts;
}

void XClient::collect(xcb_window_t window, std::vector<WindowFacts>& found) const {
    const auto tree = ownReply(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
    if (!tree) {
        return;
    }
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        if (auto child = facts(children[i])) {
            found.push_back(std::move(*child));
        }
        collect(children[i], found);
    }
}

std::vector<WindowFacts> XClient::windows() const {
    std::vector<WindowFacts> found;
    collect(root(), found);
    return found;
}

std::vector<WindowFacts> XClient::viewable(const std::function<bool(const WindowFacts&)>& wanted) const {
    std::vector<WindowFacts> found = windows();
    std::erase_if(found, [&](const WindowFacts& facts) { return !facts.viewable || !wanted(facts); });
    return found;
}

std::vector<WindowFacts> XClient::viewableOfClass(const std::string& name) const {
    return viewable([&](const WindowFacts& facts) { return facts.instance == name || facts.className == name; });
}

std::optional<WindowFacts> XClient::viewableTitled(const std::string& title) const {
    // A window manager may put the title on its frame too; the client's own window is the inner one.
    const auto found = viewable([&](const WindowFacts& facts) { return facts.title == title; });
    return found.empty() ? std::nullopt : std::optional(found.back());
}

std::vector<std::uint32_t> XClient::cardinals(xcb_window_t window, const std::string& name) const {
    const auto reply = property(connection_, window, atom(name));
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

std::string XClient::text(xcb_window_t window, const std::string& name) const {
    return bytes(property(connection_, window, atom(name)));
}

xcb_window_t XClient::selectionOwner(const std::string& selection) const {
    const auto cookie = xcb_get_selection_owner(connection_, atom(selection));
    const auto reply = ownReply(xcb_get_selection_owner_reply(connection_, cookie, nullptr));
    return reply ? reply->owner : 0;
}

xcb_window_t XClient::focus() const {
    const auto reply = ownReply(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    return reply ? reply->focus : 0;
}

bool XClient::hasFocus(xcb_window_t window) const {
    for (xcb_window_t inner = focus(); inner > 1 && inner != root();) { // 0 and 1 stand for nobody and the root
        if (inner == window) {
            return true;
        }
        const auto tree = ownReply(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, inner), nullptr));
        inner = tree ? tree->parent : 0;
    }
    return false;
}

std::uint16_t XClient::modifierState() const {
    const auto reply = ownReply(xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root()), nullptr));
    return reply ? reply->mask : 0;
}

xcb_window_t XClient::windowUnderPointer() const {
    const auto reply = ownReply(xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root()), nullptr));
    return reply ? reply->child : 0;
}

std::uint32_t XClient::pixel(int x, int y) const {
    const auto cookie = xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root(), static_cast<std::int16_t>(x),
                                      static_cast<std::int16_t>(y), 1, 1, ~0U);
    const auto reply = ownReply(xcb_get_image_reply(connection_, cookie, nullptr));
    std::uint32_t value = 0;
    if (reply && xcb_get_image_data_length(reply.get()) >= 4) {
        std::memcpy(&value, xcb_get_image_data(reply.get()), sizeof value);
    }
    return value & 0xffffff;
}

void XClient::fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y) const {
    xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root(), static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y), 0);
    sync();
}

std::uint8_t XClient::keycode(std::uint32_t keysym) const {
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto cookie = xcb_get_keyboard_mapping(connection_, setup->min_keycode, count);
    const auto reply = ownReply(xcb_get_keyboard_mapping_reply(connection_, cookie, nullptr));
    if (!reply || reply->keysyms_per_keycode == 0) {
        return 0;
    }
    const xcb_keysym_t* begin = xcb_get_keyboard_mapping_keysyms(reply.get());
    const int perKey = reply->keysyms_per_keycode;
    // The first level of a key wins over a shifted one.
    for (int level = 0; level < perKey; ++level) {
        for (int key = 0; key < count; ++key) {
            if (begin[key * perKey + level] == keysym) {
                return static_cast<std::uint8_t>(setup->min_keycode + key);
            }
        }
    }
    return 0;
}

std::uint8_t XClient::existingKeycode(std::uint32_t keysym) const {
    const std::uint8_t code = keycode(keysym);
    if (code == 0) {
        throw std::runtime_error("no key has the keysym " + std::to_string(keysym));
    }
    return code;
}

void XClient::pressKey(std::uint32_t keysym) const {
    fakeInput(XCB_KEY_PRESS, existingKeycode(keysym), 0, 0);
}

void XClient::releaseKey(std::uint32_t keysym) const {
    fakeInput(XCB_KEY_RELEASE, existingKeycode(keysym), 0, 0);
}

void XClient::tapKey(std::uint32_t keysym, const std::vector<std::uint32_t>& modifiers) const {
    std::for_each(modifiers.begin(), modifiers.end(), [this](std::uint32_t modifier) { pressKey(modifier); });
    pressKey(keysym);
    releaseKey(keysym);
    std::for_each(modifiers.rbegin(), modifiers.rend(), [this](std::uint32_t modifier) { releaseKey(modifier); });
}

void XClient::tapKeycode(std::uint8_t keycode) const {
    fakeInput(XCB_KEY_PRESS, keycode, 0, 0);
    fakeInput(XCB_KEY_RELEASE, keycode, 0, 0);
}

void XClient::movePointer(int x, int y) const {
    fakeInput(XCB_MOTION_NOTIFY, 0, x, y);
}

void XClient::pressButton(std::uint8_t button) const {
    fakeInput(XCB_BUTTON_PRESS, button, 0, 0);
    sync();
}

void XClient::releaseButton(std::uint8_t button) const {
    fakeInput(XCB_BUTTON_RELEASE, button, 0, 0);
    sync();
}

void XClient::dragTo(int fromX, int fromY, int toX, int toY) const {
    const auto pause = [](int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); };
    movePointer(fromX, fromY);
    pause(300);
    pressButton();
    pause(300);
    for (const int step : {3, 6, 9, 13, 17, 20}) {
        movePointer(fromX + step, fromY + step);
        pause(50);
    }
    pause(400);
    constexpr int steps = 10;
    for (int step = 1; step <= steps; ++step) {
        movePointer(fromX + (toX - fromX) * step / steps, fromY + (toY - fromY) * step / steps);
        pause(50);
    }
    pause(300);
    movePointer(toX + 2, toY);
    pause(500);
}

void XClient::click(int x, int y, std::uint8_t button) const {
    movePointer(x, y);
    fakeInput(XCB_BUTTON_PRESS, button, 0, 0);
    fakeInput(XCB_BUTTON_RELEASE, button, 0, 0);
}

void XClient::requestClose(xcb_window_t window) const {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom("_NET_CLOSE_WINDOW");
    constexpr std::uint32_t fromPager = 2;
    event.data.data32[1] = fromPager;
    xcb_send_event(connection_, 0, root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    sync();
}

bool XClient::grabKeycode(std::uint8_t keycode, std::uint16_t modifiers) const {
    const auto cookie =
        xcb_grab_key_checked(connection_, 0, root(), modifiers, keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    return !ownReply(xcb_request_check(connection_, cookie));
}

bool XClient::grabKey(std::uint32_t keysym, std::uint16_t modifiers) const {
    return grabKeycode(existingKeycode(keysym), modifiers);
}

void XClient::ungrabKey(std::uint32_t keysym, std::uint16_t modifiers) const {
    xcb_ungrab_key(connection_, existingKeycode(keysym), root(), modifiers);
    sync();
}

bool XClient::isKeycodeHeld(std::uint8_t keycode, std::uint16_t modifiers) const {
    xcb_grab_server(connection_);
    const bool free = grabKeycode(keycode, modifiers);
    if (free) {
        xcb_ungrab_key(connection_, keycode, root(), modifiers);
    }
    xcb_ungrab_server(connection_);
    sync();
    return !free;
}

bool XClient::isKeyHeld(std::uint32_t keysym, std::uint16_t modifiers) const {
    return isKeycodeHeld(existingKeycode(keysym), modifiers);
}

} // namespace rb
