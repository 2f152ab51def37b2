#include "desktops/macos/HotKeys.h"

#import <Carbon/Carbon.h>

#include <memory>
#include <utility>

namespace rb {

namespace {

using Pressed = std::function<void(HotKeyId)>;

OSStatus hotKeyPressed(EventHandlerCallRef, EventRef event, void* userData) {
    EventHotKeyID identifier{};
    // A failed read leaves the zeros.
    GetEventParameter(event, kEventParamDirectObject, typeEventHotKeyID, nullptr, sizeof identifier, nullptr,
                      &identifier);
    const Pressed pressed = *static_cast<const Pressed*>(userData); // lives on if it drops its own handle
    pressed({.signature = identifier.signature, .id = identifier.id});
    return noErr;
}

} // namespace

Handle MacHotKeys::installHandler(std::function<void(HotKeyId)> pressed) {
    const auto kept = std::make_shared<Pressed>(std::move(pressed));
    const EventTypeSpec type{kEventClassKeyboard, kEventHotKeyPressed};
    EventHandlerRef handler = nullptr;
    if (InstallEventHandler(GetApplicationEventTarget(), hotKeyPressed, 1, &type, kept.get(), &handler) != noErr) {
        return {};
    }
    return Handle([handler, kept] { RemoveEventHandler(handler); });
}

Handle MacHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyId id) {
    const EventHotKeyID identifier{id.signature, id.id};
    EventHotKeyRef hotKey = nullptr;
    if (RegisterEventHotKey(keyCode, modifiers, identifier, GetApplicationEventTarget(), 0, &hotKey) != noErr) {
        return {};
    }
    return Handle([hotKey] { UnregisterEventHotKey(hotKey); });
}

} // namespace rb
