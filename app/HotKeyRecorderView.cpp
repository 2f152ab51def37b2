#include "app/HotKeyRecorderView.h"

#include "platform/HotKeys.h"
#include "platform/Unicode.h"

#include <algorithm>
#include <array>

namespace rb {

namespace {

constexpr const char* placeholder = "点击这里，然后按下快捷键";

struct KeyName {
    std::uint16_t code;
    const char* name;
};
constexpr std::array<KeyName, 34> keyNames{{
    {122, "F1"},      {120, "F2"},        {99, "F3"},     {118, "F4"},  {96, "F5"},   {97, "F6"},    {98, "F7"},
    {100, "F8"},      {101, "F9"},        {109, "F10"},   {103, "F11"}, {111, "F12"}, {105, "F13"},  {107, "F14"},
    {113, "F15"},     {106, "F16"},       {64, "F17"},    {79, "F18"},  {80, "F19"},  {90, "F20"},   {36, "Return"},
    {48, "Tab"},      {49, "Space"},      {51, "Delete"}, {117, "⌦"},   {53, "Esc"},  {115, "Home"}, {119, "End"},
    {116, "Page Up"}, {121, "Page Down"}, {123, "←"},     {124, "→"},   {126, "↑"},   {125, "↓"},
}};

struct ModifierName {
    std::uint32_t flag;
    const char* symbol;
    std::uint32_t carbonBit;
};
// In the order in which they are shown.
constexpr std::array<ModifierName, 4> modifierNames{{
    {ControlModifier, "⌃", HotKeyControl},
    {OptionModifier, "⌥", HotKeyOption},
    {ShiftModifier, "⇧", HotKeyShift},
    {CommandModifier, "⌘", HotKeyCommand},
}};

std::string nameOfKey(const KeyEvent& event) {
    const auto* const named =
        std::find_if(keyNames.begin(), keyNames.end(), [&](const KeyName& key) { return key.code == event.keyCode; });
    if (named != keyNames.end()) {
        return named->name;
    }
    if (!event.charactersIgnoringModifiers.empty()) {
        return uppercased(event.charactersIgnoringModifiers);
    }
    return "Key " + std::to_string(event.keyCode);
}

} // namespace

HotKeyRecorderView::HotKeyRecorderView(const Appearance& appearance)
    : appearance_(appearance) {
    layer_->change().cornerRadius = 10;
    layer_->change().borderWidth = 2;
    updateLayer();
    setDisplayText({});
}

void HotKeyRecorderView::setDisplayText(const std::string& text) {
    showsPlaceholder_ = text.empty();
    labelText_ = showsPlaceholder_ ? placeholder : text;
    if (needsRender) {
        needsRender();
    }
}

void HotKeyRecorderView::becomeFirstResponder() {
    isFirstResponder_ = true;
    updateLayer();
}

void HotKeyRecorderView::resignFirstResponder() {
    isFirstResponder_ = false;
    updateLayer();
}

void HotKeyRecorderView::keyDown(const KeyEvent& event) {
    std::string display;
    std::uint32_t carbonModifiers = 0;
    for (const ModifierName& modifier : modifierNames) {
        if ((event.modifierFlags & modifier.flag) != 0) {
            display += modifier.symbol;
            carbonModifiers |= modifier.carbonBit;
        }
    }
    display += nameOfKey(event);
    setDisplayText(display);
    if (recordHandler) {
        recordHandler(event.keyCode, carbonModifiers, display);
    }
}

void HotKeyRecorderView::updateLayer() {
    LayerModel& model = layer_->change();
    model.backgroundColor = appearance_.color(SystemColor::ControlBackground);
    model.borderColor = appearance_.color(isFirstResponder_ ? SystemColor::Green : SystemColor::ControlAccent);
}

View HotKeyRecorderView::view(const std::string& identifier) {
    LabelView label{.text = labelText_,
                    .font = {.size = 20, .weight = FontWeight::Semibold},
                    .color = showsPlaceholder_ ? TextColor::SecondaryLabel : TextColor::Label,
                    .alignment = TextAlignment::Center};
    BoxView box;
    box.layer = layer_;
    box.insets = {.left = 12, .right = 12};
    box.placement = BoxContentPlacement::Center;
    box.child.push_back({.content = std::move(label)});
    box.acceptsFirstResponder = acceptsFirstResponder();
    box.becameFirstResponder = [this] { becomeFirstResponder(); };
    box.resignedFirstResponder = [this] { resignFirstResponder(); };
    box.keyDown = [this](const KeyEvent& event) { keyDown(event); };
    box.mouseDown = [] { return true; };
    box.updateLayer = [this] { updateLayer(); };
    return {.content = std::move(box), .identifier = identifier};
}

} // namespace rb
