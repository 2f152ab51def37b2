#pragma once

#include "app/HotKeySettings.h"
#include "app/LockHotKey.h"
#include "app/NewTextFile.h"
#include "app/Toasts.h"
#include "app/UpdateFeed.h"
#include "clipboard/ClipboardHistory.h"
#include "clothesline/Clothesline.h"
#include "displays/DisplayController.h"
#include "menubar/MenuBarHider.h"
#include "platform/Application.h"
#include "platform/Menu.h"
#include "platform/StatusBar.h"

#include <memory>

namespace rb {

// The program's spine: creates the features, builds the status menu and hangs their own menus in it, owns the lock
// hot key and its settings window, and puts back what must be put back when the program quits. Lives as long as the
// process. Main thread only.
class AppDelegate final : public ApplicationDelegate {
public:
    explicit AppDelegate(const Desktop& desktop);
    ~AppDelegate() override;
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    void applicationDidFinishLaunching() override;
    // Opens the Screens and connections window.
    bool applicationShouldHandleReopen(bool hasVisibleWindows) override;
    // Files opened with the program hang on the line.
    void applicationOpenFiles(const std::vector<std::string>& paths) override { clothesline_->hangFiles(paths); }
    // A new text file, in that folder or, without one, where the user is looking.
    void applicationNewTextFile(const std::optional<std::string>& folder) override;
    void applicationWillTerminate() override;
    // The preview panel is driven by the clothesline.
    bool acceptsPreviewPanelControl() override { return true; }
    void beginPreviewPanelControl(PreviewPanel& panel) override;
    void endPreviewPanelControl(PreviewPanel& panel) override;

    void showDisplays();
    void lockAndSleep() { hotKey_.lockAndSleep(); }
    void showHotKeySettings() { hotKeySettings_.showHotKeySettings(); }
    void newTextFile() { newTextFile_.newTextFile(); }
    void checkForUpdatesFromMenu() { updateFeed_.checkForUpdatesFromMenu(); }

    LockHotKey& hotKey() { return hotKey_; }
    HotKeySettings& hotKeySettings() { return hotKeySettings_; }
    Toasts& toasts() { return toasts_; }
    // Null before the launch.
    const Menu* statusMenu() const { return statusMenu_.get(); }

private:
    void createStatusMenu();
    MenuItem menuItem(const std::string& title, const std::string& symbol, void (AppDelegate::*action)());
    MenuItem submenuItem(const std::string& title, const std::string& symbol, std::shared_ptr<Menu> menu) const;
    void updateHotKeyMenuText();
    void startFeatures();

    const Desktop& desktop_;
    LockHotKey hotKey_;
    HotKeySettings hotKeySettings_;
    Toasts toasts_;
    NewTextFile newTextFile_;
    UpdateFeed updateFeed_;

    std::unique_ptr<RBClipboardHistory> clipboard_;
    std::unique_ptr<RBClothesline> clothesline_;
    std::unique_ptr<RBMenuBarHider> menuBarHider_;
    std::unique_ptr<DisplayController> displayController_;
    bool featuresRunning_ = false;

    std::shared_ptr<Menu> statusMenu_;
    std::unique_ptr<StatusItem> statusItem_;
    // Items whose texts and actions change later; shared with the status menu.
    std::shared_ptr<MenuItem> hotKeyInfoItem_;
};

} // namespace rb
