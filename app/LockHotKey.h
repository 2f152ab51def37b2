#pragma once

#include "app/HotKey.h"
#include "platform/Desktop.h"
#include "platform/HotKeys.h"
#include "platform/RunLoop.h"

namespace rb {

class LockHotKey;

// What the hot-key handler does with a press: other identifiers than ours are ignored, ours locks in a later turn
// of the run loop.
void HandleHotKey(HotKeyId pressed, LockHotKey& owner);

// The active hot key and what it does: one key, pressed anywhere, locks the screen and then darkens the displays.
// At most one key is registered at any time. Main thread only.
class LockHotKey {
public:
    struct RegisterOptions {
        bool showingError = false;
    };

    explicit LockHotKey(const Desktop& desktop)
        : desktop_(desktop)
        , displaySleep_(desktop.runLoop) {}

    // Fills the active key from the user defaults, or with F13 when none is saved.
    void loadHotKey();
    // Begins to listen to the presses of registered keys; once per program.
    void installHandler();
    // Registers the active key in place of an earlier one, which is gone even when this fails. With showingError a
    // failure is told in an alert.
    bool registerCurrentHotKey(RegisterOptions options);
    void unregisterHotKey() { registration_.reset(); }
    bool isRegistered() const { return static_cast<bool>(registration_); }

    const HotKey& current() const { return current_; }
    // Only replaces the value; register and save are separate steps.
    void setCurrent(HotKey hotKey) { current_ = std::move(hotKey); }
    void save() const;

    void lockAndSleep();

private:
    friend void HandleHotKey(HotKeyId pressed, LockHotKey& owner);

    const Desktop& desktop_;
    HotKey current_;
    Handle handler_;
    Handle registration_;
    DelayedCalls displaySleep_;
    Lifetime lifetime_;
};

} // namespace rb
