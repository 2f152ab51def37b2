#pragma once

#include "tests/session/frame/EventLog.h"
#include "tests/session/frame/Session.h"
#include "tests/session/frame/Wait.h"

#include <QJsonObject>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace rb {

// The classes of the program's own windows.
inline constexpr const char* menuBarClass = "rookbay-menubar";
inline constexpr const char* menuClass = "rookbay-menu";
inline constexpr const char* panelClass = "rookbay-panel";
// From the right end of our own menu bar to the middle of the status item, with the clock between them.
inline constexpr int statusItemFromRight = 158;
inline constexpr const char* settingsTitle = "Rook Bay 快捷键设置";

// A session with the program in it. A failed test leaves a picture of its screen and the logs of all programs.
class SessionTest : public testing::Test {
protected:
    explicit SessionTest(const SessionOptions& options = {})
        : session_(options) {}
    void TearDown() override;

    Session& session() { return session_; }
    XClient& x() { return session_.x(); }

    // Starts the program without waiting for anything.
    Program& launch(const std::vector<std::string>& arguments = {});
    // Starts it and waits until its item is in its own menu bar and its key is taken.
    Program& startRookBay(const std::vector<std::string>& arguments = {});
    // A program with the keyboard focus, as the user's usual one.
    xcb_window_t startFocusedTerminal();

    // Makes a locker that only counts how often it was started; to be called before the program starts.
    void useCountingLocker(const std::string& otherSettings = "");
    int lockings() const;
    [[nodiscard]] bool waitForLockings(int count, double limit = 3) const {
        return waitUntil([&] { return lockings() == count; }, limit);
    }

    // Clicks on the status item in our own menu bar and waits for the menu; its window, or 0.
    xcb_window_t openMenu();
    // Windows of the program that look like alerts: dialogs other than the settings.
    std::vector<WindowFacts> alerts();
    // What the settings file holds now; empty when it isn't there or isn't JSON.
    QJsonObject defaults() const;

private:
    Session session_;
};

} // namespace rb
