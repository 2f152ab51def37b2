#include "app/HotKeyRecorderView.h"

#include "desktops/virtual/Appearance.h"
#include "platform/HotKeys.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace rb {

namespace {

using Recorded = std::tuple<std::uint32_t, std::uint32_t, std::string>;

class HotKeyRecorderViewTest : public testing::Test {
protected:
    Recorded press(const KeyEvent& event) {
        Recorded recorded;
        recorder_.recordHandler = [&](std::uint32_t code, std::uint32_t modifiers, const std::string& display) {
            recorded = {code, modifiers, display};
        };
        recorder_.keyDown(event);
        EXPECT_EQ(recorder_.labelText(), std::get<2>(recorded)) << "it shows what it records";
        return recorded;
    }
    VirtualAppearance appearance_;
    HotKeyRecorderView recorder_{appearance_};
};

TEST_F(HotKeyRecorderViewTest, NamesTheKeysThatTypeNothing) {
    const std::vector<std::pair<std::uint16_t, std::string>> names{
        {122, "F1"},      {120, "F2"},        {99, "F3"},     {118, "F4"},  {96, "F5"},   {97, "F6"},    {98, "F7"},
        {100, "F8"},      {101, "F9"},        {109, "F10"},   {103, "F11"}, {111, "F12"}, {105, "F13"},  {107, "F14"},
        {113, "F15"},     {106, "F16"},       {64, "F17"},    {79, "F18"},  {80, "F19"},  {90, "F20"},   {36, "Return"},
        {48, "Tab"},      {49, "Space"},      {51, "Delete"}, {117, "⌦"},   {53, "Esc"},  {115, "Home"}, {119, "End"},
        {116, "Page Up"}, {121, "Page Down"}, {123, "←"},     {124, "→"},   {126, "↑"},   {125, "↓"},
    };
    ASSERT_EQ(names.size(), 34U);
    for (const auto& [code, name] : names) {
        // What the key types doesn't matter when it has a name.
        EXPECT_EQ(press({.keyCode = code, .charactersIgnoringModifiers = "x"}), (Recorded{code, 0, name}));
    }
}

TEST_F(HotKeyRecorderViewTest, RecordsKeyModifiersAndText) {
    constexpr std::uint32_t capsLock = 0x10000;
    constexpr std::uint32_t function = 0x800000;
    constexpr std::uint32_t all = ControlModifier | OptionModifier | ShiftModifier | CommandModifier;
    struct Case {
        KeyEvent event;
        Recorded expected;
    };
    const std::vector<Case> cases{
        {{37, ControlModifier | OptionModifier, "l"}, {37, 0x1800, "⌃⌥L"}},
        {{105, CommandModifier, ""}, {105, 0x0100, "⌘F13"}},
        {{37, all, "L"}, {37, 0x1B00, "⌃⌥⇧⌘L"}},
        {{0, NoModifiers, "a"}, {0, 0, "A"}},
        {{18, ShiftModifier, "!"}, {18, 0x0200, "⇧!"}},
        {{37, capsLock | function, "l"}, {37, 0, "L"}},
        {{200, NoModifiers, ""}, {200, 0, "Key 200"}},
        {{65535, OptionModifier, ""}, {65535, 0x0800, "⌥Key 65535"}},
        {{41, NoModifiers, "é"}, {41, 0, "É"}},
        {{41, NoModifiers, "ж"}, {41, 0, "Ж"}},
        {{41, NoModifiers, "中"}, {41, 0, "中"}},
    };
    for (const Case& tested : cases) {
        EXPECT_EQ(press(tested.event), tested.expected) << std::get<2>(tested.expected);
    }
}

TEST_F(HotKeyRecorderViewTest, AsksForAKeyWhileItHasNone) {
    EXPECT_EQ(recorder_.labelText(), "点击这里，然后按下快捷键");
    recorder_.setDisplayText("F13");
    EXPECT_EQ(recorder_.labelText(), "F13");
    recorder_.setDisplayText("");
    EXPECT_EQ(recorder_.labelText(), "点击这里，然后按下快捷键");
    recorder_.recordHandler = nullptr;
    recorder_.keyDown({.keyCode = 105});
    EXPECT_EQ(recorder_.labelText(), "F13") << "shows the key also when nobody records it";
}

TEST_F(HotKeyRecorderViewTest, LooksLikeAFieldThatListensWhenItIsGreen) {
    const LayerModel& look = recorder_.layer()->model();
    EXPECT_EQ(look.cornerRadius, 10);
    EXPECT_EQ(look.borderWidth, 2);
    EXPECT_EQ(look.backgroundColor, appearance_.color(SystemColor::ControlBackground));
    EXPECT_EQ(look.borderColor, appearance_.color(SystemColor::ControlAccent));
    recorder_.becomeFirstResponder();
    EXPECT_EQ(look.borderColor, appearance_.color(SystemColor::Green));
    recorder_.resignFirstResponder();
    EXPECT_EQ(look.borderColor, appearance_.color(SystemColor::ControlAccent));
    EXPECT_TRUE(recorder_.acceptsFirstResponder());

    const View view = recorder_.view("recorder");
    const auto& box = std::get<BoxView>(view.content);
    EXPECT_EQ(box.placement, BoxContentPlacement::Center);
    EXPECT_EQ(box.insets.left, 12);
    EXPECT_EQ(box.insets.right, 12);
    const auto& label = std::get<LabelView>(box.child.at(0).content);
    EXPECT_EQ(label.font, (Font{.size = 20, .weight = FontWeight::Semibold}));
    EXPECT_EQ(label.alignment, TextAlignment::Center);
}

} // namespace

} // namespace rb
