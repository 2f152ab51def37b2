#include "app/HotKeySettings.h"

#include "platform/Application.h"

#include <utility>

namespace rb {

namespace {

constexpr const char* recorderIdentifier = "recorder";
constexpr Size contentSize{480, 285};

} // namespace

HotKeySettings::HotKeySettings(const Desktop& desktop, LockHotKey& hotKey, std::function<void()> saved)
    : desktop_(desktop)
    , hotKey_(hotKey)
    , saved_(std::move(saved)) {}

void HotKeySettings::showHotKeySettings() {
    if (!settingsWindow_) {
        createSettingsWindow();
    }
    pending_ = hotKey_.current();
    recorderView_->setDisplayText(pending_.display);
    desktop_.application.activateIgnoringOtherApps();
    settingsWindow_->center();
    settingsWindow_->makeKeyAndOrderFront();
    settingsWindow_->makeFirstResponder(recorderIdentifier);
}

void HotKeySettings::createSettingsWindow() {
    recorderView_ = std::make_unique<HotKeyRecorderView>(desktop_.appearance);
    recorderView_->recordHandler = [this](std::uint32_t code, std::uint32_t modifiers, const std::string& display) {
        pending_ = {.code = code, .modifiers = modifiers, .display = display};
    };
    settingsWindow_ = desktop_.windows.createWindow({.contentSize = contentSize, .title = "Rook Bay 快捷键设置"});
    recorderView_->needsRender = [this] { render(); };
    render();
}

void HotKeySettings::render() {
    settingsWindow_->setContent(content());
}

View HotKeySettings::content() {
    View heading{.content = LabelView{.text = "设置一键锁屏快捷键", .font = {.size = 22, .weight = FontWeight::Bold}},
                 .spacingAfter = 10};
    View description{.content = LabelView{.text = "点击下方方框，再按下你想使用的键。推荐把机械键盘的一个闲置键映射为 "
                                                  "F13–F20，避免普通字母在打字时误锁屏。",
                                          .color = TextColor::SecondaryLabel,
                                          .wraps = true},
                     .spacingAfter = 18};
    View recorder = recorderView_->view(recorderIdentifier);
    recorder.height = 78;

    StackView buttons{.orientation = Orientation::Horizontal, .alignment = StackAlignment::Center, .spacing = 10};
    buttons.children.push_back(
        {.content = ButtonView{.title = "恢复 F13", .action = [this] { resetPendingHotKey(); }}});
    buttons.children.push_back({.content = SpacerView{}});
    buttons.children.push_back({.content = ButtonView{.title = "取消", .action = [this] { closeSettings(); }}});
    buttons.children.push_back(
        {.content = ButtonView{.title = "保存", .action = [this] { saveHotKey(); }, .keyEquivalent = "\r"}});

    StackView page{.orientation = Orientation::Vertical,
                   .alignment = StackAlignment::Fill,
                   .insets = {.top = 22, .left = 26, .bottom = 20, .right = 26}};
    page.children.push_back(std::move(heading));
    page.children.push_back(std::move(description));
    page.children.push_back(std::move(recorder));
    page.children.push_back({.content = SpacerView{}});
    page.children.push_back({.content = std::move(buttons)});
    return {.content = std::move(page)};
}

void HotKeySettings::resetPendingHotKey() {
    pending_ = HotKey{};
    recorderView_->setDisplayText(pending_.display);
    settingsWindow_->makeFirstResponder(recorderIdentifier);
}

void HotKeySettings::saveHotKey() {
    const HotKey previous = hotKey_.current();
    HotKey chosen = pending_;
    if (chosen.display.empty()) {
        chosen.display = unnamedHotKeyDisplay;
    }
    hotKey_.setCurrent(std::move(chosen));
    if (!hotKey_.registerCurrentHotKey({.showingError = true})) {
        // The old key works again and the window stays for another try.
        hotKey_.setCurrent(previous);
        hotKey_.registerCurrentHotKey({.showingError = false});
        return;
    }
    hotKey_.save();
    saved_();
    settingsWindow_->orderOut();
}

void HotKeySettings::closeSettings() {
    settingsWindow_->orderOut();
}

} // namespace rb
