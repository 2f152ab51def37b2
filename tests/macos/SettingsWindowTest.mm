#include "tests/macos/Program.h"

namespace rb {

namespace {

class SettingsWindowTest : public ProgramTest {
protected:
    void open() {
        fake::press(menuItem("设置快捷键…"));
        window_ = fake::lastCall("-[NSWindow makeKeyAndOrderFront:]").receiver();
        recorder_ = fake::lastCall("-[NSWindow makeFirstResponder:]").object(0);
    }

    void typeKey(unsigned short code, NSEventModifierFlags flags, NSString* characters) {
        NSEvent* event = [[NSEvent alloc] init];
        fake::answer(event, "keyCode", code);
        fake::answer(event, "modifierFlags", static_cast<long>(flags));
        fake::answer(event, "charactersIgnoringModifiers", characters);
        [recorder_ keyDown:event];
    }

    NSString* shownKey() { return fake::lastCall("-[NSTextField setStringValue:]").object(0); }

    static NSButton* button(const std::string& title) {
        for (const auto& call : fake::calls("-[NSButton setTitle:]")) {
            if (call.receiver() != nil && call.string(0) == title) {
                return call.receiver();
            }
        }
        ADD_FAILURE() << "no button " << title;
        return nil;
    }

    NSWindow* window_ = nil;
    NSView* recorder_ = nil;

    void TearDown() override {
        window_ = nil;
        recorder_ = nil;
        ProgramTest::TearDown();
    }
};

TEST_F(SettingsWindowTest, isMadeOnceAndListensAtOnce) {
    launch([this] {
        open();
        const auto made = fake::lastCall("-[NSWindow initWithContentRect:styleMask:backing:defer:]");
        EXPECT_EQ(made.rect(0).size.width, 480);
        EXPECT_EQ(made.rect(0).size.height, 285);
        EXPECT_EQ(made.integer(1), NSWindowStyleMaskTitled | NSWindowStyleMaskClosable);
        EXPECT_EQ(made.integer(2), NSBackingStoreBuffered);
        EXPECT_EQ(made.integer(3), 0);
        EXPECT_EQ(fake::lastCall("-[NSWindow setReleasedWhenClosed:]").integer(0), 0);
        EXPECT_EQ(fake::calls("-[NSWindow center]").size(), 1u);
        EXPECT_TRUE(recorder_.acceptsFirstResponder);
        EXPECT_TRUE([button("保存").keyEquivalent isEqualToString:@"\r"]);

        NSMenuItem* item = menuItem("设置快捷键…");
        fake::forgetCalls();
        fake::press(item);
        EXPECT_TRUE(fake::calls("-[NSWindow initWithContentRect:styleMask:backing:defer:]").empty());
        EXPECT_EQ(fake::lastCall("-[NSWindow makeKeyAndOrderFront:]").receiver(), window_);
    });
}

TEST_F(SettingsWindowTest, aRecordedKeyIsRegisteredStoredAndShown) {
    launch([this] {
        open();
        fake::forgetCalls();
        typeKey(37, NSEventModifierFlagControl | NSEventModifierFlagOption | NSEventModifierFlagCapsLock, @"l");
        EXPECT_EQ(fake::lastCall("-[NSTextField setStringValue:]").string(0), "⌃⌥L");
        EXPECT_TRUE(fake::calls("RegisterEventHotKey").empty());

        fake::press(button("保存"));
        EXPECT_EQ(fake::calls("UnregisterEventHotKey").size(), 1u);
        EXPECT_EQ(fake::lastCall("RegisterEventHotKey").integer(0), 37);
        EXPECT_EQ(fake::lastCall("RegisterEventHotKey").integer(1), 0x1800);
        EXPECT_EQ([NSUserDefaults.standardUserDefaults integerForKey:@"HotKeyCode"], 37);
        EXPECT_EQ([NSUserDefaults.standardUserDefaults integerForKey:@"HotKeyModifiers"], 0x1800);
        EXPECT_TRUE([[NSUserDefaults.standardUserDefaults stringForKey:@"HotKeyDisplay"] isEqualToString:@"⌃⌥L"]);
        EXPECT_EQ(fake::lastCall("-[NSWindow orderOut:]").receiver(), window_);
        EXPECT_NE(menuItem("当前快捷键：⌃⌥L"), nil);
    });
}

TEST_F(SettingsWindowTest, theRecorderStaysTheSameViewWhileTyping) {
    launch([this] {
        open();
        fake::forgetCalls();
        typeKey(0, 0, @"a");
        typeKey(1, 0, @"s");
        EXPECT_TRUE(fake::calls("-[NSView addSubview:]").empty());
        EXPECT_TRUE(fake::calls("-[NSStackView insertArrangedSubview:atIndex:]").empty());
        EXPECT_TRUE(fake::calls("+[NSTextField labelWithString:]").empty());
    });
}

TEST_F(SettingsWindowTest, theBorderTellsWhoListens) {
    // A green that is told apart from the accent colour by its red part.
    NSColor* green = [[NSColor alloc] init];
    fake::answer("+[NSColor systemGreenColor]", green);
    fake::onCall("-[NSAppearance performAsCurrentDrawingAppearance:]",
                 [](fake::Call& call) { call.block<void (^)()>(0)(); });
    fake::onCall("-[NSColor colorUsingColorSpace:]", [](fake::Call& call) { call.answer(call.receiver()); });
    fake::onCall("-[NSColor getRed:green:blue:alpha:]",
                 [green](fake::Call& call) { *call.pointer<CGFloat*>(0) = call.receiver() == green ? 0.25 : 0.5; });
    launch([this] {
        open();
        fake::forgetCalls();
        const auto drawsGreen = [] {
            endTurn();
            const bool green = fake::called("CGColorCreateSRGB 0.25, 0, 0, 0");
            fake::forgetCalls();
            return green;
        };
        [recorder_ becomeFirstResponder];
        EXPECT_TRUE(fake::calls("CGColorCreateSRGB").empty()) << "drawn at the end of the turn, not before";
        EXPECT_TRUE(drawsGreen());
        [recorder_ resignFirstResponder];
        EXPECT_FALSE(drawsGreen());
    });
    green = nil;
}

} // namespace

} // namespace rb
