#pragma once

#include "app/HotKey.h"
#include "app/HotKeyRecorderView.h"
#include "app/LockHotKey.h"
#include "platform/Desktop.h"
#include "platform/Window.h"

#include <functional>
#include <memory>

namespace rb {

// The window in which the user records another hot key. Nothing takes effect before "保存", and then only if the
// key can be registered. The window is made on first use and kept. Main thread only.
class HotKeySettings {
public:
    // `saved` runs after another key took effect.
    HotKeySettings(const Desktop& desktop, LockHotKey& hotKey, std::function<void()> saved);

    void showHotKeySettings();
    void resetPendingHotKey();
    void saveHotKey();
    void closeSettings();

    // Null before the first use.
    const HotKeyRecorderView* recorderView() const { return recorderView_.get(); }
    const HotKey& pending() const { return pending_; }

private:
    void createSettingsWindow();
    void render();
    View content();

    const Desktop& desktop_;
    LockHotKey& hotKey_;
    std::function<void()> saved_;
    HotKey pending_;
    // The window's content refers to the recorder.
    std::unique_ptr<HotKeyRecorderView> recorderView_;
    std::unique_ptr<Window> settingsWindow_;
};

} // namespace rb
