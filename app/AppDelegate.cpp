#include "app/AppDelegate.h"

#include <algorithm>
#include <utility>

namespace rb {

AppDelegate::AppDelegate(const Desktop& desktop)
    : desktop_(desktop)
    , hotKey_(desktop)
    , hotKeySettings_(desktop, hotKey_, [this] { updateHotKeyMenuText(); })
    , toasts_(desktop)
    , newTextFile_(desktop)
    , updateFeed_(desktop) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    desktop_.application.setActivationPolicy(ActivationPolicy::Accessory);
    hotKey_.loadHotKey();

    clipboard_ = std::make_unique<RBClipboardHistory>(desktop_, toasts_);
    clothesline_ = std::make_unique<RBClothesline>(desktop_, toasts_);
    menuBarHider_ = std::make_unique<RBMenuBarHider>(desktop_);

    updateFeed_.startUpdater();

    createStatusMenu();
    displayController_ = std::make_unique<DisplayController>(desktop_);
    startFeatures();
    newTextFile_.installTextQuickAction();

    hotKey_.installHandler();
    hotKey_.registerCurrentHotKey({.showingError = true});

    const auto arguments = desktop_.application.arguments();
    if (std::find(arguments.begin(), arguments.end(), "--connections") != arguments.end()) {
        showDisplays();
    }
}

void AppDelegate::startFeatures() {
    if (std::exchange(featuresRunning_, true)) {
        return;
    }
    menuBarHider_->start();
    clipboard_->start();
    clothesline_->start();
}

MenuItem AppDelegate::menuItem(const std::string& title, const std::string& symbol, void (AppDelegate::*action)()) {
    MenuItem item{.title = title, .action = [this, action](MenuItem&) { (this->*action)(); }};
    if (!symbol.empty()) {
        item.image = Symbol{.name = symbol};
    }
    return item;
}

MenuItem AppDelegate::submenuItem(const std::string& title, const std::string& symbol,
                                  std::shared_ptr<Menu> menu) const {
    return {.title = title, .image = Symbol{.name = symbol}, .submenu = std::move(menu)};
}

void AppDelegate::createStatusMenu() {
    statusItem_ = desktop_.statusBar.createItem();
    statusItem_->setImage(Symbol{.name = "lock.display", .accessibilityDescription = "Rook Bay"});

    statusMenu_ = std::make_shared<Menu>();
    Menu& menu = *statusMenu_;
    menu.addItem(menuItem("立即锁屏并关闭显示器", "lock.fill", &AppDelegate::lockAndSleep));
    hotKeyInfoItem_ = menu.addItem({.enabled = false, .indentationLevel = 1});
    updateHotKeyMenuText();
    menu.addSeparator();
    menu.addItem(submenuItem("剪贴板历史", "doc.on.clipboard", clipboard_->menu()));
    menu.addItem(submenuItem("晾衣绳", "tshirt", clothesline_->menu()));
    menu.addItem(submenuItem("菜单栏图标", "menubar.rectangle", menuBarHider_->settingsMenu()));
    menu.addItem(menuItem("新建 TXT…", "doc.badge.plus", &AppDelegate::newTextFile));
    menu.addSeparator();
    menu.addItem(menuItem("屏幕与连接…", "display.2", &AppDelegate::showDisplays));
    menu.addItem(menuItem("设置快捷键…", "keyboard", &AppDelegate::showHotKeySettings))->keyEquivalent = ",";
    if (updateFeed_.hasUpdater()) {
        menu.addItem(menuItem("检查更新…", "arrow.triangle.2.circlepath", &AppDelegate::checkForUpdatesFromMenu));
    }
    menu.addSeparator();
    menu.addItem({.title = "退出 Rook Bay",
                  .action = [&application = desktop_.application](MenuItem&) { application.terminate(); },
                  .keyEquivalent = "q"});
    statusItem_->setMenu(statusMenu_);
}

void AppDelegate::updateHotKeyMenuText() {
    const std::string& display = hotKey_.current().display;
    hotKeyInfoItem_->title = "当前快捷键：" + display;
    statusItem_->setToolTip("Rook Bay：" + display + " 锁屏");
}

void AppDelegate::showDisplays() {
    if (!displayController_) {
        displayController_ = std::make_unique<DisplayController>(desktop_);
    }
    displayController_->show();
}

void AppDelegate::applicationNewTextFile(const std::optional<std::string>& folder) {
    if (folder) {
        newTextFile_.newTextFileIn(*folder);
    } else {
        newTextFile_.newTextFile();
    }
}

bool AppDelegate::applicationShouldHandleReopen(bool /*hasVisibleWindows*/) {
    showDisplays();
    return true;
}

void AppDelegate::applicationWillTerminate() {
    if (clothesline_) {
        clothesline_->restoreScreenshotSettings();
    }
    hotKey_.unregisterHotKey();
}

void AppDelegate::beginPreviewPanelControl(PreviewPanel& panel) {
    clothesline_->beginPreviewPanelControl(panel);
}

void AppDelegate::endPreviewPanelControl(PreviewPanel& panel) {
    clothesline_->endPreviewPanelControl(panel);
}

} // namespace rb
