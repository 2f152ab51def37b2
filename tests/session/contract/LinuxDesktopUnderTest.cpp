#include "tests/session/contract/LinuxDesktopUnderTest.h"

#include "desktops/linux/AlertDialog.h"
#include "desktops/linux/Alerts.h"
#include "desktops/linux/BoxWidget.h"
#include "desktops/linux/MenuAction.h"
#include "desktops/linux/MenuWidget.h"
#include "desktops/linux/Window.h"
#include "platform/Displays.h"
#include "platform/HotKeys.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QPushButton>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace rb {

namespace {

// Beside the clock.
constexpr int statusItemFromRight = 158;

std::uint32_t keysymOf(std::uint32_t keyCode) {
    switch (keyCode) {
    case 36:
        return XKB_KEY_Return;
    case 37:
        return XKB_KEY_l;
    case 105:
        return XKB_KEY_F13;
    default:
        throw std::logic_error("a key that this user doesn't find: " + std::to_string(keyCode));
    }
}

struct HeldModifier {
    std::uint32_t hotKeyBit;
    std::uint32_t keysym;
    std::uint16_t mask;
};
constexpr HeldModifier heldModifiers[] = {
    {HotKeyControl, XKB_KEY_Control_L, XCB_MOD_MASK_CONTROL},
    {HotKeyOption, XKB_KEY_Alt_L, XCB_MOD_MASK_1},
    {HotKeyShift, XKB_KEY_Shift_L, XCB_MOD_MASK_SHIFT},
    {HotKeyCommand, XKB_KEY_Super_L, XCB_MOD_MASK_4},
};

std::vector<MenuWidget*> openMenus() {
    std::vector<MenuWidget*> menus;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* menu = dynamic_cast<MenuWidget*>(widget);
        if (menu != nullptr && menu->isVisible()) {
            menus.push_back(menu);
        }
    }
    return menus;
}

} // namespace

LinuxDesktopUnderTest::LinuxDesktopUnderTest(const SessionOptions& options)
    : session_(options) {
    for (const auto& [name, value] : session_.environment) {
        ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe): before there are threads
    }
    auto connection = XConnection::open();
    if (!connection) {
        throw std::runtime_error("no connection to the session's X server");
    }
    desktop_ = std::make_unique<LinuxDesktop>(std::vector<std::string>{}, std::move(connection), instance_, log_);
}

void LinuxDesktopUnderTest::live(double seconds) {
    QEventLoop loop;
    QTimer::singleShot(std::max(1, static_cast<int>(seconds * 1000)), Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

bool LinuxDesktopUnderTest::isOnMainThread() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

void LinuxDesktopUnderTest::pressKey(const KeyEvent& event) {
    until([] { return QGuiApplication::focusWindow() != nullptr; }); // else the key goes nowhere
    session_.x().tapKey(keysymOf(event.keyCode));
}

void LinuxDesktopUnderTest::pressHotKey(std::uint32_t keyCode, std::uint32_t modifiers) {
    XClient& x = session_.x();
    for (const HeldModifier& modifier : heldModifiers) {
        if ((modifiers & modifier.hotKeyBit) != 0) {
            x.pressKey(modifier.keysym);
        }
    }
    x.pressKey(keysymOf(keyCode));
    live(0.3); // the session's keys repeat after half of that
    x.releaseKey(keysymOf(keyCode));
    for (const HeldModifier& modifier : heldModifiers) {
        if ((modifiers & modifier.hotKeyBit) != 0) {
            x.releaseKey(modifier.keysym);
        }
    }
    live(0.02); // a press in the millisecond of a release would be a repeat
}

Handle LinuxDesktopUnderTest::holdHotKeyElsewhere(std::uint32_t keyCode, std::uint32_t modifiers) {
    std::uint16_t mask = 0;
    for (const HeldModifier& modifier : heldModifiers) {
        mask = static_cast<std::uint16_t>(mask | ((modifiers & modifier.hotKeyBit) != 0 ? modifier.mask : 0));
    }
    const std::uint32_t keysym = keysymOf(keyCode);
    if (!session_.x().grabKey(keysym, mask)) {
        throw std::logic_error("the key is taken");
    }
    return Handle([this, keysym, mask] { session_.x().ungrabKey(keysym, mask); });
}

std::optional<Alert> LinuxDesktopUnderTest::alertOnScreen() {
    const auto& alerts = desktop_->alerts();
    const AlertDialog* dialog = alerts.current();
    return dialog != nullptr && dialog->isVisible() ? alerts.currentAlert() : std::nullopt;
}

void LinuxDesktopUnderTest::answerAlert(std::size_t button) {
    const auto& alerts = desktop_->alerts();
    // Alerts without buttons of their own have one all the same.
    click(*alerts.current()->buttons().at(button));
}

void LinuxDesktopUnderTest::closeAlert() {
    const auto& alerts = desktop_->alerts();
    settle(*alerts.current());
    session_.x().requestClose(static_cast<xcb_window_t>(alerts.current()->winId()));
}

bool LinuxDesktopUnderTest::clickButton(Window& window, const std::string& title) {
    const QWidget& topLevel = dynamic_cast<LinuxWindow&>(window).topLevel();
    for (const QAbstractButton* button : topLevel.findChildren<QAbstractButton*>()) {
        if (button->text().toStdString() == title && button->isVisible()) {
            click(*button);
            return button->isEnabled();
        }
    }
    return false;
}

void LinuxDesktopUnderTest::clickBox(Window& window, const std::string& identifier) {
    const QWidget& topLevel = dynamic_cast<LinuxWindow&>(window).topLevel();
    for (const QWidget* child : topLevel.findChildren<QWidget*>()) {
        const auto* box = dynamic_cast<const BoxWidget*>(child);
        if (box != nullptr && box->identifier() == identifier) {
            click(*child);
        }
    }
}

void LinuxDesktopUnderTest::closeWindow(Window& window) {
    const QWidget& topLevel = dynamic_cast<LinuxWindow&>(window).topLevel();
    settle(topLevel);
    session_.x().requestClose(static_cast<xcb_window_t>(topLevel.winId()));
}

bool LinuxDesktopUnderTest::chooseMenuItem(const std::string& title) {
    const auto menuIsOpen = [] { return !openMenus().empty(); };
    const auto bars = session_.x().viewableOfClass("rookbay-menubar");
    if (bars.empty() && !until([this] { return !session_.x().viewableOfClass("rookbay-menubar").empty(); })) {
        return false;
    }
    const WindowFacts bar = session_.x().viewableOfClass("rookbay-menubar").front();
    // A click that comes before the bar has placed its item does nothing.
    constexpr double whileItOpens = 3;
    bool open = false;
    for (int clicks = 0; clicks < 3 && !open; ++clicks) {
        session_.x().click(bar.x + bar.width - statusItemFromRight, bar.y + bar.height / 2);
        open = until(menuIsOpen, whileItOpens);
    }
    return open && chooseInOpenMenu(title);
}

bool LinuxDesktopUnderTest::chooseInOpenMenu(const std::string& title) {
    const bool chosen = chooseIn(*openMenus().front(), title);
    for (int i = 0; !openMenus().empty() && i < 5; ++i) {
        session_.x().tapKey(XKB_KEY_Escape);
        live(0.05);
    }
    return chosen;
}

void LinuxDesktopUnderTest::clickStatusItem(const StatusItem& item, const StatusItemClick& click) {
    // The server may know the bar later than the bar its items.
    until([this] { return !session_.x().viewableOfClass("rookbay-menubar").empty(); });
    live(0.1);
    const Rect frame = item.frame().value();
    const double top = desktop_->services().screens.all().front().frame.maxY();
    const bool control = (click.modifierFlags & ControlModifier) != 0;
    XClient& x = session_.x();
    if (control) {
        x.pressKey(XKB_KEY_Control_L);
    }
    x.click(static_cast<int>(frame.midX()), static_cast<int>(top - frame.midY()), click.rightButton ? 3 : 1);
    live(0.05);
    if (control) {
        x.releaseKey(XKB_KEY_Control_L);
    }
}

bool LinuxDesktopUnderTest::chooseInPoppedUpMenu(const StatusItem& /*item*/, const std::string& title) {
    return until([] { return !openMenus().empty(); }) && chooseInOpenMenu(title);
}

void LinuxDesktopUnderTest::pressElsewhere(Popover& /*popover*/) {
    until([this] { return !session_.x().viewableOfClass("rookbay-popover").empty(); });
    session_.x().click(300, 600);
    live(0.05);
}

void LinuxDesktopUnderTest::changeMode() {
    const auto display = desktop_->services().displays.all().front();
    for (const DisplayMode& mode : display.modes) {
        if (mode != *display.currentMode) {
            char number[16] = {};
            std::snprintf(number, sizeof number, "0x%x", static_cast<unsigned>(mode.modeID));
            Program& xrandr = session_.start({"xrandr", "--output", display.name, "--mode", number});
            xrandr.waitForExit();
            return;
        }
    }
    throw std::logic_error("the display has only one mode");
}

// Looks into submenus as a person does, by pointing at them.
bool LinuxDesktopUnderTest::chooseIn(const MenuWidget& menu, const std::string& title) {
    for (QAction* action : menu.actions()) {
        const auto* row = dynamic_cast<const MenuAction*>(action);
        const QPoint middle = menu.mapToGlobal(menu.actionGeometry(action).center());
        if (row != nullptr && row->item().title == title) {
            session_.x().click(middle.x(), middle.y());
            live(0.05);
            return action->isEnabled();
        }
        const auto* submenu = dynamic_cast<const MenuWidget*>(action->menu());
        if (submenu != nullptr) {
            session_.x().movePointer(middle.x(), middle.y());
            if (until([&] { return submenu->isVisible(); }) && chooseIn(*submenu, title)) {
                return true;
            }
        }
    }
    return false;
}

void LinuxDesktopUnderTest::settle(const QWidget& widget) {
    // Until the window manager has framed and placed it, a click could miss.
    const auto window = static_cast<xcb_window_t>(widget.window()->winId());
    until([&] {
        const auto facts = session_.x().facts(window);
        const QPoint place = widget.window()->mapToGlobal(QPoint(0, 0));
        return facts && facts->viewable && facts->x == place.x() && facts->y == place.y();
    });
}

void LinuxDesktopUnderTest::click(const QWidget& widget) {
    settle(widget);
    const QPoint middle = widget.mapToGlobal(widget.rect().center());
    session_.x().click(middle.x(), middle.y());
    live(0.02);
}

} // namespace rb
