#include "menubar/MenuBarHider.h"

#include "app/DefaultsKeys.h"
#include "platform/Appearance.h"
#include "platform/EventMonitors.h"
#include "platform/Pointer.h"
#include "platform/Screens.h"
#include "platform/UserDefaults.h"
#include "platform/WindowList.h"

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr double controlLength = 22;
constexpr double separatorLength = 14;
constexpr double collapsedLength = 10000;

constexpr std::int64_t usualDelay = 10;
constexpr double introDelay = 1;
constexpr double leaveDelay = 1;
constexpr double nextAttempt = 1.5;
constexpr double flipDuration = 0.22;
constexpr double bandBelowMenuBar = 6; // counts as inside

constexpr const char* collapsedSymbol = "chevron.left";
constexpr const char* expandedSymbol = "chevron.right";

Symbol chevron(bool collapsed) {
    return {.name = collapsed ? collapsedSymbol : expandedSymbol,
            .pointSize = 12,
            .weight = FontWeight::Semibold,
            .accessibilityDescription = "展开或收起菜单栏图标"};
}

} // namespace

RBMenuBarHider::RBMenuBarHider(const Desktop& desktop, Toasts& toasts)
    : desktop_(desktop)
    , toasts_(toasts)
    , settingsMenu_(std::make_shared<Menu>("菜单栏图标")) {
    desktop_.userDefaults.registerDefaults({{DefaultsKey::MenuBarHiderEnabled, true},
                                            {DefaultsKey::MenuBarHiderDelay, usualDelay},
                                            {DefaultsKey::MenuBarHiderCollapseOnLeave, true}});
    settingsMenu_->needsUpdate = lifetime_.guard([this](Menu& menu) { fillSettingsMenu(menu); });
}

bool RBMenuBarHider::enabled() const {
    return desktop_.userDefaults.boolForKey(DefaultsKey::MenuBarHiderEnabled);
}

void RBMenuBarHider::start() {
    if (enabled()) {
        install();
    }
}

void RBMenuBarHider::stop() {
    introTimer_.reset();
    closeIntro();
    if (control_) {
        uninstall();
    }
}

void RBMenuBarHider::createItems() {
    // The older item stands further right, so the dot begins left of the chevron.
    control_ = desktop_.statusBar.createItem();
    control_->setLength(controlLength);
    control_->setAutosaveName("RookBayHiderControl");
    control_->setAction([this](const StatusItemClick& click) { itemClicked(*control_, click); });
    control_->setToolTip("点击展开或收起菜单栏图标，右键查看选项");
    control_->setLayerBacked(true);

    separator_ = desktop_.statusBar.createItem();
    separator_->setLength(separatorLength);
    separator_->setAutosaveName("RookBayHiderSeparator");
    separator_->setAction([this](const StatusItemClick& click) { itemClicked(*separator_, click); });
    separator_->setToolTip("按住 ⌘ 把图标拖到这个点的左边，收起时就会隐藏");

    barChanges_ = desktop_.statusBar.onBarChange([this] { barChanged(); });
    appearanceChanges_ = desktop_.appearance.onChange([this] { applyState({.animated = false}); }); // the dot's tint
}

void RBMenuBarHider::install() {
    if (!control_) {
        createItems();
    }
    control_->setVisible(true);
    separator_->setVisible(true);
    expand();
    // One that is under way stays, also when the hider was switched off and on meanwhile.
    if (!introTimer_ && !desktop_.userDefaults.boolForKey(DefaultsKey::MenuBarHiderIntroShown)) {
        introTimer_ = desktop_.runLoop.after(introDelay, [this] { showIntro(); });
    }
}

void RBMenuBarHider::uninstall() {
    stopAutoCollapse();
    collapsed_ = false;
    applyState({.animated = false});
    separator_->setVisible(false);
    control_->setVisible(false);
}

void RBMenuBarHider::applyState(StateOptions options) {
    if (!control_) {
        return;
    }
    if (collapsed_) {
        separator_->setImage({});
        separator_->setLength(collapsedLength);
    } else {
        separator_->setImage(Symbol{.name = "circle.fill",
                                    .pointSize = 5,
                                    .weight = FontWeight::Regular,
                                    .tint = desktop_.appearance.color(SystemColor::TertiaryLabel),
                                    .accessibilityDescription = "分隔点"});
        separator_->setLength(separatorLength);
    }
    if (options.animated) {
        control_->addTransition("rb.flip",
                                {.from = collapsed_ ? PushTransition::From::Left : PushTransition::From::Right,
                                 .duration = flipDuration,
                                 .timing = RBEaseOut});
    }
    control_->setImage(chevron(collapsed_));
}

bool RBMenuBarHider::separatorIsLeftOfControl() const {
    const auto separator = separator_->frame();
    const auto control = control_->frame();
    return !separator || !control || separator->minX() <= control->minX();
}

void RBMenuBarHider::itemClicked(StatusItem& item, const StatusItemClick& click) {
    if (click.rightButton || (click.modifierFlags & ControlModifier) != 0) {
        const auto menu = std::make_shared<Menu>("菜单栏图标");
        fillSettingsMenu(*menu);
        item.popUpMenu(menu);
        return;
    }
    toggleNow();
}

void RBMenuBarHider::expand() {
    if (!control_) {
        return;
    }
    const bool was = std::exchange(collapsed_, false);
    applyState({.animated = was});
    startAutoCollapse();
}

void RBMenuBarHider::collapseByUser(CollapseOptions options) {
    if (collapsed_ || !control_ || !control_->isVisible()) {
        return;
    }
    const auto hint = [&](const char* text) {
        if (options.showHint) {
            toasts_.RBShowToast(text, "exclamationmark.triangle.fill", SystemColor::Orange);
        }
    };
    if (!desktop_.statusBar.longItemsPushOthersOut()) {
        // A panel that arranges its icons by itself would only lose the dot.
        hint("这个面板自己排列图标，无法收起");
        return;
    }
    if (!separatorIsLeftOfControl()) {
        hint("请先按住 ⌘ 把 • 拖到箭头左边");
        return;
    }
    stopAutoCollapse();
    collapsed_ = true;
    applyState({.animated = true});
}

void RBMenuBarHider::barChanged() {
    // The bar that hid the icons is gone; the next one may not be able to.
    if (control_->isVisible() && collapsed_ && !desktop_.statusBar.longItemsPushOthersOut()) {
        expand();
    }
}

void RBMenuBarHider::startAutoCollapse() {
    stopAutoCollapse();
    const auto delay = desktop_.userDefaults.integerForKey(DefaultsKey::MenuBarHiderDelay);
    if (delay > 0) {
        collapseTimer_ = desktop_.runLoop.after(static_cast<double>(delay), [this] { autoCollapse(); });
    }
    if (desktop_.userDefaults.boolForKey(DefaultsKey::MenuBarHiderCollapseOnLeave)) {
        mouseMonitor_ = desktop_.eventMonitors.addGlobalMonitor(MouseMovedMask, [this] { pointerMoved(); });
    }
}

void RBMenuBarHider::stopAutoCollapse() {
    collapseTimer_.reset();
    leaveTimer_.reset();
    mouseMonitor_.reset();
}

bool RBMenuBarHider::pointerInMenuBar() const {
    const Point pointer = desktop_.pointer.location();
    const auto screen = RBScreenAt(desktop_.screens, pointer);
    if (!screen) {
        return false;
    }
    const double height = std::max(screen->frame.maxY() - screen->visibleFrame.maxY(), desktop_.statusBar.thickness());
    return pointer.y >= screen->frame.maxY() - height - bandBelowMenuBar;
}

bool RBMenuBarHider::anyMenuOpen() const {
    const auto layers = desktop_.windowList.layersOnScreen();
    return layers && std::find(layers->begin(), layers->end(), PopUpMenuWindowLayer) != layers->end();
}

void RBMenuBarHider::pointerMoved() {
    if (collapsed_) {
        return;
    }
    if (pointerInMenuBar()) {
        leaveTimer_.reset();
    } else if (!leaveTimer_) {
        leaveTimer_ = desktop_.runLoop.after(leaveDelay, [this] {
            leaveTimer_.reset();
            autoCollapse();
        });
    }
}

void RBMenuBarHider::autoCollapse() {
    if (collapsed_ || introPopover_) {
        return;
    }
    if (!pointerInMenuBar() && !anyMenuOpen()) {
        collapseByUser({.showHint = false});
    } else {
        postpone();
    }
}

// With the pointer in the bar the attempts end: its leaving is noticed by itself.
void RBMenuBarHider::postpone() {
    leaveTimer_ = desktop_.runLoop.after(nextAttempt, [this] {
        leaveTimer_.reset();
        if (!pointerInMenuBar()) {
            autoCollapse();
        }
    });
}

void RBMenuBarHider::toggleEnabled() {
    const bool was = enabled();
    desktop_.userDefaults.setObject(DefaultsKey::MenuBarHiderEnabled, !was);
    if (!was) {
        install();
    } else if (control_) {
        uninstall();
    }
}

void RBMenuBarHider::toggleNow() {
    if (collapsed_) {
        expand();
    } else {
        collapseByUser({.showHint = true});
    }
}

void RBMenuBarHider::setDelay(int seconds) {
    desktop_.userDefaults.setObject(DefaultsKey::MenuBarHiderDelay, std::int64_t{seconds});
    if (!collapsed_) {
        startAutoCollapse();
    }
}

void RBMenuBarHider::toggleMouseLeave() {
    const bool was = desktop_.userDefaults.boolForKey(DefaultsKey::MenuBarHiderCollapseOnLeave);
    desktop_.userDefaults.setObject(DefaultsKey::MenuBarHiderCollapseOnLeave, !was);
    if (!collapsed_) {
        startAutoCollapse();
    }
}

} // namespace rb
