#include "desktops/linux/HotKeys.h"

#include "desktops/linux/KeyCodes.h"
#include "platform/Log.h"
#include "platform/RunLoop.h"

#include <algorithm>
#include <string>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace rb {

// The keyboard's map as the server holds it.
struct LinuxHotKeys::KeyboardMap {
    std::uint8_t firstKey = 0;
    std::size_t keysymsPerKey = 0;
    std::vector<std::uint32_t> keysyms;
    std::uint16_t numLock = 0; // modifier bit, 0 when the keyboard has none

    std::size_t keys() const { return keysymsPerKey == 0 ? 0 : keysyms.size() / keysymsPerKey; }
    // The keysym that the key types alone.
    std::uint32_t plainKeysym(std::size_t key) const { return keysyms[key * keysymsPerKey]; }
};

LinuxHotKeys::LinuxHotKeys(XConnection& connection, RunLoop& runLoop, Log& log)
    : connection_(connection)
    , runLoop_(runLoop)
    , log_(log) {}

LinuxHotKeys::~LinuxHotKeys() {
    for (auto& [number, registration] : registrations_) {
        release(registration);
    }
    xcb_flush(connection_.get());
}

Handle LinuxHotKeys::installHandler(std::function<void(HotKeyId)> pressed) {
    return handlers_.add(std::move(pressed));
}

Handle LinuxHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyId id) {
    Registration registration{.keyCode = keyCode, .modifiers = xModifiersOfHotKey(modifiers), .id = id};
    // The server lets one client grab a key twice and then one release takes it from both.
    const bool taken = std::any_of(registrations_.begin(), registrations_.end(), [&](const auto& entry) {
        return entry.second.keyCode == keyCode && entry.second.modifiers == registration.modifiers;
    });
    if (taken) {
        return {};
    }
    if (!events_) {
        events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
    }
    if (!grab(registration, readKeyboardMap())) {
        return {};
    }
    const std::uint64_t number = nextRegistration_++;
    registrations_.emplace(number, std::move(registration));
    return Handle(lifetime_.guard([this, number] {
        const auto entry = registrations_.find(number);
        release(entry->second);
        xcb_flush(connection_.get());
        registrations_.erase(entry);
    }));
}

LinuxHotKeys::KeyboardMap LinuxHotKeys::readKeyboardMap() {
    xcb_connection_t* connection = connection_.get();
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto keysymsCookie = xcb_get_keyboard_mapping(connection, setup->min_keycode, count);
    const auto modifiersCookie = xcb_get_modifier_mapping(connection);
    const XReply<xcb_get_keyboard_mapping_reply_t> keysyms(
        xcb_get_keyboard_mapping_reply(connection, keysymsCookie, nullptr));
    const XReply<xcb_get_modifier_mapping_reply_t> modifiers(
        xcb_get_modifier_mapping_reply(connection, modifiersCookie, nullptr));
    connection_.deliverQueuedEvents();
    KeyboardMap map;
    map.firstKey = setup->min_keycode;
    if (!keysyms || !modifiers) {
        return map;
    }
    map.keysymsPerKey = keysyms->keysyms_per_keycode;
    const xcb_keysym_t* first = xcb_get_keyboard_mapping_keysyms(keysyms.get());
    map.keysyms.assign(first, first + xcb_get_keyboard_mapping_keysyms_length(keysyms.get()));

    const xcb_keycode_t* keys = xcb_get_modifier_mapping_keycodes(modifiers.get());
    const std::size_t perModifier = modifiers->keycodes_per_modifier;
    for (std::size_t slot = 0; slot < 8 * perModifier; ++slot) {
        const std::size_t key = keys[slot];
        if (key >= map.firstKey && key - map.firstKey < map.keys() &&
            map.plainKeysym(key - map.firstKey) == XKB_KEY_Num_Lock) {
            map.numLock = static_cast<std::uint16_t>(1U << (slot / perModifier));
        }
    }
    return map;
}

// By name where the map has the name, else by place.
std::vector<std::uint8_t> LinuxHotKeys::keysOf(const KeyboardMap& map, std::uint32_t keyCode) const {
    std::vector<std::uint8_t> keys;
    if (const auto keysym = keysymOfMacKeyCode(keyCode)) {
        for (std::size_t key = 0; key < map.keys(); ++key) {
            if (map.plainKeysym(key) == *keysym) {
                keys.push_back(static_cast<std::uint8_t>(map.firstKey + key));
            }
        }
    }
    const auto place = placeOfMacKeyCode(keyCode);
    if (keys.empty() && place && *place >= map.firstKey &&
        static_cast<std::size_t>(*place - map.firstKey) < map.keys()) {
        keys.push_back(*place);
    }
    return keys;
}

bool LinuxHotKeys::grab(Registration& registration, const KeyboardMap& map) {
    std::vector<std::uint16_t> locks = {0, XCB_MOD_MASK_LOCK};
    if (map.numLock != 0) {
        locks.push_back(map.numLock);
        locks.push_back(static_cast<std::uint16_t>(map.numLock | XCB_MOD_MASK_LOCK));
    }
    std::vector<xcb_void_cookie_t> cookies;
    for (const std::uint8_t key : keysOf(map, registration.keyCode)) {
        for (const std::uint16_t lock : locks) {
            const auto modifiers = static_cast<std::uint16_t>(registration.modifiers | lock);
            cookies.push_back(xcb_grab_key_checked(connection_.get(), 1, connection_.root(), modifiers, key,
                                                   XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
            registration.grabs.push_back({key, modifiers});
        }
    }
    bool allOurs = !cookies.empty() && xcb_connection_has_error(connection_.get()) == 0;
    for (const xcb_void_cookie_t cookie : cookies) {
        const XReply<xcb_generic_error_t> error(xcb_request_check(connection_.get(), cookie));
        allOurs = allOurs && !error;
    }
    if (!allOurs) {
        release(registration);
        xcb_flush(connection_.get());
    }
    connection_.deliverQueuedEvents();
    return allOurs;
}

void LinuxHotKeys::release(Registration& registration) {
    for (const Grab& held : registration.grabs) {
        xcb_ungrab_key(connection_.get(), held.key, connection_.root(), held.modifiers);
    }
    registration.grabs.clear();
}

void LinuxHotKeys::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
    case XCB_KEY_PRESS:
        keyPressed(reinterpret_cast<const xcb_key_press_event_t&>(event));
        break;
    case XCB_KEY_RELEASE: {
        const auto& release = reinterpret_cast<const xcb_key_release_event_t&>(event);
        lastRelease_ = {release.detail, release.time};
        break;
    }
    case XCB_MAPPING_NOTIFY:
        if (reinterpret_cast<const xcb_mapping_notify_event_t&>(event).request != XCB_MAPPING_POINTER) {
            keyboardMapChanged();
        }
        break;
    default:
        break;
    }
}

void LinuxHotKeys::keyPressed(const xcb_key_press_event_t& event) {
    // The grab holds the whole keyboard until the key is released, and a locker that starts meanwhile could not take
    // it: give it back at once.
    xcb_ungrab_keyboard(connection_.get(), event.time);
    xcb_flush(connection_.get());
    if (lastRelease_ == std::pair{event.detail, event.time}) {
        return;
    }
    std::optional<HotKeyId> pressed;
    for (const auto& [number, registration] : registrations_) {
        for (const Grab& held : registration.grabs) {
            // Pointer buttons and the keyboard's group share the state with the modifiers.
            if (held.key == event.detail && held.modifiers == (event.state & 0xFF)) {
                pressed = registration.id;
            }
        }
    }
    if (pressed) {
        handlers_.notify(*pressed);
    }
}

void LinuxHotKeys::keyboardMapChanged() {
    if (!std::exchange(grabbingAnew_, true)) {
        runLoop_.post(lifetime_.guard([this] {
            grabbingAnew_ = false;
            grabAnew();
        }));
    }
}

void LinuxHotKeys::grabAnew() {
    const KeyboardMap map = readKeyboardMap();
    for (auto& [number, registration] : registrations_) {
        release(registration);
        if (!grab(registration, map)) {
            log_.write("the hot key with code " + std::to_string(registration.keyCode) +
                       " can't be used with this keyboard map; it is tried again when the map changes");
        }
    }
}

} // namespace rb
