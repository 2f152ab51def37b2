#pragma once

#include "platform/Alerts.h"
#include "platform/Desktop.h"
#include "platform/Handle.h"
#include "platform/Keyboard.h"
#include "platform/RunLoop.h"
#include "platform/StatusBar.h"
#include "platform/Window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace rb {

// A desktop with a user in front of it: what the contract suites need to drive one. An act returns when the desktop
// has taken it in; what the product hears of it may still be on its way, so tests wait with `until`.
class DesktopUnderTest {
public:
    virtual ~DesktopUnderTest() = default;

    virtual const Desktop& services() = 0;
    // Lets the desktop run that long.
    virtual void live(double seconds) = 0;
    // Lets it run until the condition holds; false when it doesn't within the limit.
    bool until(const std::function<bool()>& condition, double limit = 10) {
        constexpr double step = 0.005;
        for (double waited = 0; !condition(); waited += step) {
            if (waited > limit) {
                return false;
            }
            live(step);
        }
        return true;
    }
    virtual bool isOnMainThread() = 0;

    // The user's acts.
    virtual void pressKey(const KeyEvent& event) = 0;
    // Holds the combination down long enough for key repeats, then lets go. Modifiers as in HotKeyModifiers.
    virtual void pressHotKey(std::uint32_t keyCode, std::uint32_t modifiers) = 0;
    // Another program holds the combination until the handle goes.
    virtual Handle holdHotKeyElsewhere(std::uint32_t keyCode, std::uint32_t modifiers) = 0;
    // The alert on the screen, if any.
    virtual std::optional<Alert> alertOnScreen() = 0;
    virtual void answerAlert(std::size_t button) = 0;
    virtual void closeAlert() = 0;
    // False when the window's button can't be clicked.
    virtual bool clickButton(Window& window, const std::string& title) = 0;
    virtual void clickBox(Window& window, const std::string& identifier) = 0;
    virtual void closeWindow(Window& window) = 0;
    // Opens the status item's menu and chooses the item; false when it isn't there or can't be chosen.
    virtual bool chooseMenuItem(const std::string& title) = 0;
    // On an item that is in the bar.
    virtual void clickStatusItem(const StatusItem& item, const StatusItemClick& click) = 0;
    // In the menu that the item has popped up; false when there is none, or no such item.
    virtual bool chooseInPoppedUpMenu(const StatusItem& item, const std::string& title) = 0;
    // Outside of the popover, which is on the screen.
    virtual void pressElsewhere(Popover& popover) = 0;
    // Gives the primary screen's display another one of its modes.
    virtual void changeMode() = 0;

    // Paths of programs: one writes its arguments as echo does, one copies its input to its output as cat does.
    virtual std::string echoProgram() = 0;
    virtual std::string catProgram() = 0;
};

// One desktop on which the suites run, with its name in the tests' names.
struct DesktopCase {
    std::string name;
    std::function<std::unique_ptr<DesktopUnderTest>()> create;
    friend void PrintTo(const DesktopCase& desktopCase, std::ostream* out) { *out << desktopCase.name; }
};

class ContractTest : public testing::TestWithParam<DesktopCase> {
protected:
    DesktopUnderTest& user() { return *user_; }
    const Desktop& desktop() { return user_->services(); }
    RunLoop& loop() { return user_->services().runLoop; }

private:
    std::unique_ptr<DesktopUnderTest> user_ = GetParam().create();
};

} // namespace rb
