#include "desktops/linux/Windows.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/QtX11.h"
#include "desktops/linux/Window.h"
#include "desktops/linux/XConnection.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

namespace rb {

LinuxWindows::LinuxWindows(XConnection& connection, LayerTicker& ticker, Symbols& symbols, LinuxAppearance& appearance)
    : connection_(connection)
    , ticker_(ticker)
    , pictures_(symbols)
    , appearance_(appearance)
    , appearanceChanges_(appearance.onChange([this] {
        for (LinuxWindow* window : std::vector(windows_)) {
            window->themeChanged();
        }
        themeChanges_.notify();
    })) {}

LinuxWindows::~LinuxWindows() = default;

std::unique_ptr<Window> LinuxWindows::createWindow(const WindowSpec& spec) {
    return std::make_unique<LinuxWindow>(*this, spec);
}

std::size_t LinuxWindows::visibleCount() const {
    return static_cast<std::size_t>(
        std::count_if(windows_.begin(), windows_.end(), [](const LinuxWindow* window) { return window->isVisible(); }));
}

bool LinuxWindows::isApplicationActive() const {
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

bool LinuxWindows::hasKeyWindow() const {
    return QApplication::activeWindow() != nullptr;
}

void LinuxWindows::activate(QWidget& window) {
    // Qt's way first, which also works without a window manager; then with the server's present time, without which
    // window managers keep a program that wasn't just used in the background.
    window.activateWindow();
    flushQt();
    connection_.activate(static_cast<xcb_window_t>(window.winId()));
}

} // namespace rb
