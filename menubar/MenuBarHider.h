#pragma once

#include "app/Toasts.h"
#include "platform/Desktop.h"
#include "platform/Handle.h"
#include "platform/Menu.h"
#include "platform/RunLoop.h"
#include "platform/StatusBar.h"

#include <memory>
#include <string>

namespace rb {

// Hides rarely used icons of the menu bar: two status items, a chevron and, to its left, a dot. Collapsed, the dot's
// item becomes so long that everything left of it leaves the bar. Nothing of this outlives the program: without it
// every icon is where it was. Main thread only.
class RBMenuBarHider {
public:
    struct StateOptions {
        bool animated = false;
    };
    struct CollapseOptions {
        bool showHint = false;
    };

    // Both outlive it. Creates no status item yet.
    RBMenuBarHider(const Desktop& desktop, Toasts& toasts);
    RBMenuBarHider(const RBMenuBarHider&) = delete;
    RBMenuBarHider& operator=(const RBMenuBarHider&) = delete;

    // The user default MenuBarHiderEnabled.
    bool enabled() const;
    void start();
    void stop();
    // Filled each time it opens.
    const std::shared_ptr<Menu>& settingsMenu() const { return settingsMenu_; }

    void install();
    // The items stay, hidden, for a later install.
    void uninstall();
    void expand();
    // Not when the dot is right of the chevron, which would hide the chevron itself.
    void collapseByUser(CollapseOptions options);
    bool collapsed() const { return collapsed_; }

    void toggleEnabled();
    void toggleNow();
    void setDelay(int seconds);
    void toggleMouseLeave();
    void showIntro();
    void closeIntro();

private:
    void createItems();
    void applyState(StateOptions options);
    bool separatorIsLeftOfControl() const;
    void itemClicked(StatusItem& item, const StatusItemClick& click);

    void startAutoCollapse();
    void stopAutoCollapse();
    bool pointerInMenuBar() const;
    bool anyMenuOpen() const;
    void pointerMoved();
    void autoCollapse();
    void postpone();
    void barChanged();

    void addItem(Menu& menu, const std::string& title, void (RBMenuBarHider::*action)());
    void addDelay(Menu& menu, const std::string& title, int seconds);
    void fillSettingsMenu(Menu& menu);
    void popoverDidClose();

    const Desktop& desktop_;
    Toasts& toasts_;
    std::shared_ptr<Menu> settingsMenu_;
    std::unique_ptr<StatusItem> control_;   // null until first installed
    std::unique_ptr<StatusItem> separator_; // likewise
    bool collapsed_ = false;
    Handle collapseTimer_;
    Handle leaveTimer_; // the mouse left, or the next attempt
    Handle mouseMonitor_;
    Handle introTimer_;
    std::unique_ptr<Popover> introPopover_; // while it is shown
    Handle barChanges_;
    Handle appearanceChanges_;
    Lifetime lifetime_;
};

} // namespace rb
