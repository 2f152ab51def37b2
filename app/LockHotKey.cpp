#include "app/LockHotKey.h"

#include "app/DefaultsKeys.h"
#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/SessionLock.h"
#include "platform/UserDefaults.h"

namespace rb {

namespace {

constexpr HotKeyId lockHotKeyId{0x524B4259 /* 'RKBY' */, 1};
// The screen saver must be up and the lock engaged before the displays go dark.
constexpr double pauseBeforeDisplaySleep = 0.6;

} // namespace

void HandleHotKey(HotKeyId pressed, LockHotKey& owner) {
    if (pressed.id != lockHotKeyId.id) {
        return;
    }
    owner.desktop_.runLoop.post(owner.lifetime_.guard([&owner] { owner.lockAndSleep(); }));
}

void LockHotKey::loadHotKey() {
    const UserDefaults& defaults = desktop_.userDefaults;
    if (!defaults.objectForKey(DefaultsKey::HotKeyCode)) {
        current_ = HotKey{};
        return;
    }
    current_.code = static_cast<std::uint32_t>(defaults.integerForKey(DefaultsKey::HotKeyCode));
    current_.modifiers = static_cast<std::uint32_t>(defaults.integerForKey(DefaultsKey::HotKeyModifiers));
    current_.display = defaults.stringForKey(DefaultsKey::HotKeyDisplay).value_or(unnamedHotKeyDisplay);
}

void LockHotKey::installHandler() {
    handler_ = desktop_.hotKeys.installHandler([this](HotKeyId pressed) { HandleHotKey(pressed, *this); });
}

bool LockHotKey::registerCurrentHotKey(RegisterOptions options) {
    registration_.reset();
    registration_ = desktop_.hotKeys.registerHotKey(current_.code, current_.modifiers, lockHotKeyId);
    if (!registration_ && options.showingError) {
        const Alert alert{.messageText = "这个快捷键无法使用",
                          .informativeText = "它可能已被系统或其他 App 占用，请换一个键。推荐使用 F13–F20。",
                          .buttons = {}};
        desktop_.application.activateIgnoringOtherApps();
        desktop_.alerts.runModal(alert, [](std::size_t) {});
    }
    return isRegistered();
}

void LockHotKey::save() const {
    UserDefaults& defaults = desktop_.userDefaults;
    defaults.setObject(DefaultsKey::HotKeyCode, std::int64_t{current_.code});
    defaults.setObject(DefaultsKey::HotKeyModifiers, std::int64_t{current_.modifiers});
    defaults.setObject(DefaultsKey::HotKeyDisplay, current_.display);
}

void LockHotKey::lockAndSleep() {
    desktop_.sessionLock.startScreenSaver();
    displaySleep_.after(pauseBeforeDisplaySleep, [&desktop = desktop_] {
        desktop.runLoop.background(QualityOfService::UserInitiated,
                                   [&sessionLock = desktop.sessionLock] { sessionLock.sleepDisplays(); });
    });
}

} // namespace rb
