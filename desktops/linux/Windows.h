#pragma once

#include "desktops/linux/Pictures.h"
#include "desktops/linux/Theme.h"
#include "platform/Handle.h"
#include "platform/Observers.h"
#include "platform/Window.h"

#include <memory>
#include <vector>

class QWidget;

namespace rb {

class LayerTicker;
class LinuxAppearance;
class LinuxWindow;
class XConnection;

// The program's windows and what they share.
class LinuxWindows final : public Windows {
public:
    // All of them outlive it.
    LinuxWindows(XConnection& connection, LayerTicker& ticker, Symbols& symbols, LinuxAppearance& appearance);
    ~LinuxWindows() override;
    LinuxWindows(const LinuxWindows&) = delete;
    LinuxWindows& operator=(const LinuxWindows&) = delete;

    std::unique_ptr<Window> createWindow(const WindowSpec& spec) override;

    // The windows that are on the screen.
    std::size_t visibleCount() const;
    // Gives a window of ours the keyboard, whichever program has it now.
    void activate(QWidget& window);

    LayerTicker& ticker() const { return ticker_; }
    const Pictures& pictures() const { return pictures_; }
    const LinuxAppearance& appearance() const { return appearance_; }
    Handle themeChanges(std::function<void()> changed) const { return themeChanges_.add(std::move(changed)); }
    // Of windows that are always dark.
    const Theme& darkTheme() const { return darkTheme_; }
    bool isApplicationActive() const override;
    bool hasKeyWindow() const override;

private:
    friend class LinuxWindow;
    void add(LinuxWindow& window) { windows_.push_back(&window); }
    void remove(LinuxWindow& window) { std::erase(windows_, &window); }

    XConnection& connection_;
    LayerTicker& ticker_;
    Pictures pictures_;
    LinuxAppearance& appearance_;
    Theme darkTheme_ = Theme::make(true, {});
    std::vector<LinuxWindow*> windows_;
    mutable Observers<> themeChanges_;
    Handle appearanceChanges_;
};

} // namespace rb
