#include "tests/macos/Program.h"

#import <Carbon/Carbon.h>

namespace rb {

namespace {

class LockTest : public ProgramTest {
protected:
    // From now on programs can be started, and are noted with their arguments.
    void noteLaunches() {
        fake::onCall("-[NSTask launchAndReturnError:]", [this](fake::Call& call) {
            NSTask* task = call.receiver();
            launched_.emplace_back(task.executableURL.path.UTF8String);
            for (NSString* argument in task.arguments) {
                launched_.back() += std::string(" ") + argument.UTF8String;
            }
            call.answer(true);
        });
    }

    std::vector<std::string> launched_;
};

// Presses a registered key as the Event Manager reports it; nothing stands for an event that can't be read.
void pressHotKey(std::optional<EventHotKeyID> identifier) {
    fake::onCall("GetEventParameter", [=](fake::Call& call) {
        EXPECT_EQ(call.integer(1), kEventParamDirectObject);
        EXPECT_EQ(call.integer(2), typeEventHotKeyID);
        EXPECT_EQ(call.integer(4), 8);
        if (identifier) {
            *call.pointer<EventHotKeyID*>(6) = *identifier;
        }
        call.answer(identifier ? noErr : eventParameterNotFoundErr);
    });
    const auto installed = fake::lastCall("InstallEventHandler");
    EXPECT_EQ(installed.pointer<EventHandlerUPP>(1)(nullptr, nullptr, installed.pointer<void*>(4)), noErr);
}

TEST_F(LockTest, registersTheKeyAndItsHandlerOnTheApplicationTarget) {
    launch([] {
        const auto installed = fake::lastCall("InstallEventHandler");
        EXPECT_EQ(installed.integer(0), fake::lastCall("RegisterEventHotKey").integer(3));
        EXPECT_EQ(installed.integer(2), 1);
        const auto* type = installed.pointer<const EventTypeSpec*>(3);
        (void)type; // lives only during the call
        const auto registered = fake::lastCall("RegisterEventHotKey");
        EXPECT_EQ(registered.integer(0), 105);
        EXPECT_EQ(registered.integer(1), 0);
        const auto identifier = registered.structure<EventHotKeyID>(2);
        EXPECT_EQ(identifier.signature, 0x524B4259u);
        EXPECT_EQ(identifier.id, 1u);
        EXPECT_EQ(registered.integer(4), 0);
    });
}

TEST_F(LockTest, theKeyLocksAndDarkensTheDisplaysAfterAPause) {
    noteLaunches();
    launch([this] {
        pressHotKey(EventHotKeyID{'RKBY', 1});
        EXPECT_TRUE(launched_.empty()) << "the handler itself must not act";
        fake::runMainQueue();
        EXPECT_EQ(launched_, (std::vector<std::string>{"/usr/bin/open -a ScreenSaverEngine"}));
        fake::advance(0.59);
        EXPECT_EQ(launched_.size(), 1u);
        fake::advance(0.02);
        ASSERT_EQ(launched_.size(), 2u);
        EXPECT_EQ(launched_.back(), "/usr/bin/pmset displaysleepnow");
    });
}

TEST_F(LockTest, otherEventsDoNothing) {
    noteLaunches();
    launch([this] {
        pressHotKey(std::nullopt);
        pressHotKey(EventHotKeyID{'RKBY', 2});
        fake::advance(2);
        EXPECT_TRUE(launched_.empty());
    });
}

TEST_F(LockTest, theMenuLocksToo) {
    noteLaunches();
    launch([this] {
        fake::press(menuItem("立即锁屏并关闭显示器"));
        EXPECT_EQ(launched_.size(), 1u);
    });
}

TEST_F(LockTest, whatCannotBeStartedIsLogged) {
    fake::onCall("-[NSTask launchAndReturnError:]", [](fake::Call& call) {
        *(NSError * __autoreleasing*)call.pointer<void*>(0) =
            [NSError errorWithDomain:NSCocoaErrorDomain code:4 userInfo:@{NSLocalizedDescriptionKey : @"100 % gone"}];
        call.answer(false);
    });
    launch([this] {
        const std::size_t before = fake::calls("NSLog").size();
        fake::press(menuItem("立即锁屏并关闭显示器"));
        EXPECT_EQ(fake::calls("NSLog").size(), before + 1);
        EXPECT_NE(fake::lastCall("NSLog").text().find("Rook Bay: could not start /usr/bin/open: 100 % gone"),
                  std::string::npos);
    });
}

TEST_F(LockTest, aTakenKeyIsToldAfterTheLaunch) {
    fake::answer("RegisterEventHotKey", eventHotKeyExistsErr);
    fake::answer("-[NSAlert runModal]", NSAlertFirstButtonReturn);
    launch([] {
        EXPECT_EQ(fake::calls("-[NSApplication activateIgnoringOtherApps:]").size(), 1u);
        fake::advance(0.1);
        EXPECT_EQ(fake::calls("-[NSAlert runModal]").size(), 1u);
        EXPECT_TRUE(fake::called("-[NSAlert setMessageText:] @\"这个快捷键无法使用\""));
        EXPECT_TRUE(fake::calls("-[NSAlert addButtonWithTitle:]").empty());
    });
    EXPECT_TRUE(fake::calls("UnregisterEventHotKey").empty());
}

} // namespace

} // namespace rb
