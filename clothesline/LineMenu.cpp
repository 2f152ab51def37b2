#include "clothesline/LineMenu.h"

#include "app/DefaultsKeys.h"
#include "app/Toasts.h"
#include "clothesline/Clothesline.h"
#include "platform/UserDefaults.h"

namespace rb {

LineMenu::LineMenu(const Desktop& desktop, RBClothesline& line, Toasts& toasts)
    : desktop_(desktop)
    , line_(line)
    , toasts_(toasts)
    , menu_(std::make_shared<Menu>("晾衣绳")) {
    menu_->needsUpdate = [this](Menu& menu) { menuNeedsUpdate(menu); };
}

LineMenu::~LineMenu() {
    // The status menu may hold the menu a little longer.
    menu_->removeAllItems();
    menu_->needsUpdate = nullptr;
}

void LineMenu::menuNeedsUpdate(Menu& menu) {
    menu.removeAllItems();
    line_.prune();
    const std::size_t count = line_.items().size();
    std::string title = "收起晾衣绳";
    if (!line_.revealed()) {
        title = count > 0 ? "放下晾衣绳（" + std::to_string(count) + " 件）" : "放下晾衣绳";
    }
    menu.addItem({.title = title,
                  .image = Symbol{.name = line_.revealed() ? "chevron.up" : "chevron.down"},
                  .action = [this](MenuItem&) { toggleLine(); }});
    menu.addItem({.title = "全部取下", .action = [this](MenuItem&) { clearAll(); }, .enabled = count > 0});
    menu.addSeparator();
    addSetting("新截图自动挂上", DefaultsKey::ClotheslineScreenshots, menu);
    MenuItem& inbox = addSetting("截图直接挂上（不放桌面、无缩略图等待）", DefaultsKey::ClotheslineInbox, menu);
    inbox.indentationLevel = 1;
    inbox.enabled = line_.setting(DefaultsKey::ClotheslineScreenshots);
    addSetting("拖文件到屏幕顶部时放下", DefaultsKey::ClotheslineDragReveal, menu);
    addSetting("鼠标停在菜单栏时放下", DefaultsKey::ClotheslineHoverReveal, menu);
    addSetting("音效", DefaultsKey::ClotheslineSound, menu);
    menu.addSeparator();
    addNote("单击复制 · 双击打开 · 长按快速查看", menu);
    addNote("拖进文件夹＝移过去 · 拖进 App＝拷贝", menu);
    addNote("把卡片拖到绳上的文件夹卡片里＝放进那个文件夹", menu);
    addNote("按住 ⇧ 左右拖动卡片＝调整顺序", menu);
    addNote("晾衣绳动画移植自 Tendedero（MIT）", menu);
}

MenuItem& LineMenu::addSetting(const std::string& title, const std::string& key, Menu& menu) {
    return *menu.addItem({.title = title,
                          .action = [this](MenuItem& sender) { toggleSetting(sender); },
                          .on = line_.setting(key),
                          .representedObject = key});
}

void LineMenu::addNote(const std::string& text, Menu& menu) {
    menu.addItem({.title = text, .enabled = false});
}

void LineMenu::toggleSetting(const MenuItem& sender) {
    const auto key = std::any_cast<std::string>(sender.representedObject);
    const bool old = line_.setting(key);
    desktop_.userDefaults.setObject(key, !old);
    if (key == DefaultsKey::ClotheslineInbox) {
        // Switching it is carried out, and stored, by the takeover alone, which may decline.
        desktop_.userDefaults.setObject(key, old);
        line_.setInbox(!old);
    }
    if (key == DefaultsKey::ClotheslineScreenshots) {
        const bool inbox = line_.setting(DefaultsKey::ClotheslineInbox);
        if (old) {
            line_.stopWatcher();
            if (inbox) {
                line_.restoreScreenshotSettings();
            }
        } else {
            if (inbox) {
                line_.applyScreenshotSettings();
            }
            line_.startWatcher();
        }
    }
}

void LineMenu::toggleLine() {
    const bool old = line_.revealed();
    if (!old) {
        line_.placeOnScreen(std::nullopt);
        line_.setPinned(true);
        line_.updateHint();
    }
    line_.setRevealed(!old);
}

void LineMenu::clearAll() {
    const std::vector<RBPegItemRef> items = line_.items();
    if (items.empty()) {
        return;
    }
    if (line_.revealed()) {
        line_.takeDownItems(items);
        return;
    }
    for (const RBPegItemRef& item : items) {
        line_.removeItem(item, {.quietly = true, .fall = false});
    }
    toasts_.RBShowToast("晾衣绳已清空", "tshirt.fill", SystemColor::Blue);
}

} // namespace rb
