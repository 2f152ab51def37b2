#include "desktops/virtual/Contract.h"
#include "desktops/virtual/Desktop.h"
#include "desktops/virtual/Menus.h"
#include "tests/contract/AllContracts.h"

#include <algorithm>

namespace rb {

namespace {

// The test's hands on a virtual desktop.
class VirtualDesktopUnderTest final : public DesktopUnderTest {
public:
    VirtualDesktopUnderTest() { desktop_.textMeter().removeSymbol("no.such.symbol"); }

    const Desktop& services() override { return desktop_.services(); }
    void live(double seconds) override { desktop_.advance(seconds); }
    bool isOnMainThread() override { return desktop_.runLoop().isOnMainThread(); }

    void pressKey(const KeyEvent& event) override { desktop_.keyboard().press(event); }
    void pressHotKey(std::uint32_t keyCode, std::uint32_t modifiers) override {
        desktop_.hotKeys().press(keyCode, modifiers);
    }
    Handle holdHotKeyElsewhere(std::uint32_t keyCode, std::uint32_t modifiers) override {
        desktop_.hotKeys().holdElsewhere(keyCode, modifiers);
        return Handle([this, keyCode, modifiers] { desktop_.hotKeys().releaseElsewhere(keyCode, modifiers); });
    }
    std::optional<Alert> alertOnScreen() override { return desktop_.alerts().current(); }
    void answerAlert(std::size_t button) override { desktop_.alerts().answerNext(button); }
    void closeAlert() override { desktop_.alerts().closeCurrent(); }
    bool clickButton(Window& window, const std::string& title) override {
        return succeeds([&] { dynamic_cast<VirtualWindow&>(window).clickButton(title); });
    }
    void clickBox(Window& window, const std::string& identifier) override {
        dynamic_cast<VirtualWindow&>(window).clickBox(identifier);
    }
    void closeWindow(Window& window) override { dynamic_cast<VirtualWindow&>(window).close(); }
    bool chooseMenuItem(const std::string& title) override {
        return succeeds([&] { desktop_.chooseMenuItem(title); });
    }
    void clickStatusItem(const StatusItem& item, const StatusItemClick& click) override {
        desktop_.runLoop().post([this, &item, click] { own(item).click(click); });
        desktop_.advance(0);
    }
    bool chooseInPoppedUpMenu(const StatusItem& item, const std::string& title) override {
        const auto menu = own(item).poppedUp();
        return menu && succeeds([&] { menus::choose(*menu, title); });
    }
    void pressElsewhere(Popover& popover) override { dynamic_cast<VirtualPopover&>(popover).pressElsewhere(); }
    void changeMode() override {
        const ConnectedDisplay display = desktop_.displays().all().front();
        const bool first = display.currentMode == display.modes.front();
        desktop_.displays().setCurrentMode(display.identity.id, display.modes.at(first ? 1 : 0));
        desktop_.displays().notify();
    }

    std::string echoProgram() override {
        desktop_.childProcesses().install("echo", [](VirtualChild& child) {
            std::string line;
            for (const std::string& word : child.arguments()) {
                line += (line.empty() ? "" : " ") + word;
            }
            child.say(line + "\n");
            child.exit();
        });
        return *desktop_.childProcesses().resourcePath("echo");
    }
    std::string catProgram() override {
        desktop_.childProcesses().install("cat", [this](VirtualChild& child) { copy(child, 0); });
        return *desktop_.childProcesses().resourcePath("cat");
    }

private:
    VirtualStatusItem& own(const StatusItem& item) {
        const auto& items = desktop_.statusBar().items();
        return **std::find(items.begin(), items.end(), &item);
    }
    // Says what is new in its input, again and again until that ends.
    void copy(VirtualChild& child, std::size_t copied) {
        if (child.input().size() > copied) {
            child.say(child.input().substr(copied));
        }
        if (child.inputClosed()) {
            child.exit();
        }
        if (child.isRunning()) {
            copying_ =
                desktop_.runLoop().after(0.001, [this, &child, said = child.input().size()] { copy(child, said); });
        }
    }
    static bool succeeds(const std::function<void()>& act) {
        try {
            act();
            return true;
        } catch (const ImpossibleAct&) {
            return false;
        }
    }

    VirtualDesktop desktop_;
    Handle copying_;
};

const DesktopCase virtualDesktop{"Virtual", [] { return std::make_unique<VirtualDesktopUnderTest>(); }};

} // namespace

ROOKBAY_INSTANTIATE_CONTRACTS(Desktop, virtualDesktop);
ROOKBAY_INSTANTIATE_CONTRACT(Desktop, DisplaysContract, virtualDesktop);

} // namespace rb
