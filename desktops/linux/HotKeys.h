#pragma once

#include "desktops/linux/XConnection.h"
#include "platform/HotKeys.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace rb {

class Log;
class RunLoop;

// Hot keys as passive grabs on the root window, in every combination of the lock modifiers. The grabs follow changes
// of the keyboard's map.
class LinuxHotKeys final : public HotKeys {
public:
    LinuxHotKeys(XConnection& connection, RunLoop& runLoop, Log& log);
    ~LinuxHotKeys() override;

    Handle installHandler(std::function<void(HotKeyId)> pressed) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyId id) override;

private:
    struct Grab {
        std::uint8_t key = 0; // X key code
        std::uint16_t modifiers = 0;
    };
    struct Registration {
        std::uint32_t keyCode = 0;
        std::uint16_t modifiers = 0; // of the grab, without locks
        HotKeyId id = {};
        std::vector<Grab> grabs = {};
    };
    struct KeyboardMap;

    KeyboardMap readKeyboardMap();
    std::vector<std::uint8_t> keysOf(const KeyboardMap& map, std::uint32_t keyCode) const;
    // All or nothing: true when every variant is ours now.
    bool grab(Registration& registration, const KeyboardMap& map);
    void release(Registration& registration);
    void handle(const xcb_generic_event_t& event);
    void keyPressed(const xcb_key_press_event_t& event);
    // A change of the map comes as many notices; they are answered together in a later turn.
    void keyboardMapChanged();
    void grabAnew();

    XConnection& connection_;
    RunLoop& runLoop_;
    Log& log_;
    Observers<HotKeyId> handlers_;
    std::map<std::uint64_t, Registration> registrations_;
    std::uint64_t nextRegistration_ = 0;
    // Key and time of the last release: the server sends a repeat as release and press of the same moment.
    std::optional<std::pair<std::uint8_t, xcb_timestamp_t>> lastRelease_;
    bool grabbingAnew_ = false;
    Lifetime lifetime_;
    Handle events_;
};

} // namespace rb
