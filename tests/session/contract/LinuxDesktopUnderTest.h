#pragma once

#include "desktops/linux/Desktop.h"
#include "desktops/linux/Log.h"
#include "desktops/linux/SingleInstance.h"
#include "tests/contract/DesktopUnderTest.h"
#include "tests/session/frame/Session.h"

#include <memory>

class QWidget;

namespace rb {

class MenuWidget;

// The Linux desktop in this process, in a private session; the user's acts are real keys and clicks in the X server.
class LinuxDesktopUnderTest final : public DesktopUnderTest {
public:
    explicit LinuxDesktopUnderTest(const SessionOptions& options = {});

    const Desktop& services() override { return desktop_->services(); }
    void live(double seconds) override;
    bool isOnMainThread() override;

    void pressKey(const KeyEvent& event) override;
    void pressHotKey(std::uint32_t keyCode, std::uint32_t modifiers) override;
    Handle holdHotKeyElsewhere(std::uint32_t keyCode, std::uint32_t modifiers) override;
    std::optional<Alert> alertOnScreen() override;
    void answerAlert(std::size_t button) override;
    void closeAlert() override;
    bool clickButton(Window& window, const std::string& title) override;
    void clickBox(Window& window, const std::string& identifier) override;
    void closeWindow(Window& window) override;
    bool chooseMenuItem(const std::string& title) override;
    void clickStatusItem(const StatusItem& item, const StatusItemClick& click) override;
    bool chooseInPoppedUpMenu(const StatusItem& item, const std::string& title) override;
    void pressElsewhere(Popover& popover) override;
    void changeMode() override;
    std::string echoProgram() override { return "/bin/echo"; }
    std::string catProgram() override { return "/bin/cat"; }

private:
    bool chooseIn(const MenuWidget& menu, const std::string& title);
    bool chooseInOpenMenu(const std::string& title);
    // Waits until the widget's window is where it says it is.
    void settle(const QWidget& widget);
    // Clicks into the middle of the widget.
    void click(const QWidget& widget);

    Session session_;
    LinuxLog log_;
    SingleInstance instance_{log_}; // never claimed
    std::unique_ptr<LinuxDesktop> desktop_;
};

} // namespace rb
