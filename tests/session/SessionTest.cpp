#include "tests/session/SessionTest.h"

#include <QJsonDocument>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace rb {

namespace fs = std::filesystem;

void SessionTest::TearDown() {
    if (!HasFailure()) {
        return;
    }
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    fs::create_directories(SESSION_PICTURES);
    const std::string picture = std::string(SESSION_PICTURES "/") + test->name() + ".png";
    if (saveScreenshot(x(), picture)) {
        std::printf("picture: %s\n", picture.c_str());
    }
    std::printf("%s", session_.logs().c_str());
}

Program& SessionTest::launch(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{ROOKBAY_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return session_.start(command);
}

Program& SessionTest::startRookBay(const std::vector<std::string>& arguments) {
    Program& program = launch(arguments);
    EXPECT_TRUE(waitUntil([&] { return !x().viewableOfClass(menuBarClass).empty(); })) << "no menu bar";
    constexpr std::uint8_t usualPlace = 191;
    const std::uint8_t named = x().keycode(XKB_KEY_F13);
    EXPECT_TRUE(waitUntil([&] { return x().isKeycodeHeld(named != 0 ? named : usualPlace); })) << "the key is free";
    return program;
}

xcb_window_t SessionTest::startFocusedTerminal() {
    session_.start({"xterm"});
    const auto terminal = [this] { return x().viewableOfClass("XTerm"); };
    EXPECT_TRUE(waitUntil([&] { return !terminal().empty(); })) << "no terminal";
    EXPECT_TRUE(waitUntil([&] {
        const auto found = terminal();
        if (found.empty()) {
            return false;
        }
        const WindowFacts& facts = found.back();
        x().click(facts.x + facts.width / 2, facts.y + facts.height / 2);
        return waitUntil([&] { return x().hasFocus(facts.window); }, 1);
    }));
    return x().focus();
}

void SessionTest::useCountingLocker(const std::string& otherSettings) {
    const std::string locker = session_.folder() + "/locker";
    writeFile(locker, "#!/bin/sh\necho locked >>" + session_.folder() + "/lockings\n");
    fs::permissions(locker, fs::perms::owner_all);
    session_.writeDefaults("{\"LinuxLockCommand\": \"" + locker + "\"" + otherSettings + "}");
}

int SessionTest::lockings() const {
    const std::string lines = readFile(session_.folder() + "/lockings").value_or("");
    return static_cast<int>(std::count(lines.begin(), lines.end(), '\n'));
}

xcb_window_t SessionTest::openMenu() {
    if (!waitUntil([this] { return !x().viewableOfClass(menuBarClass).empty(); })) {
        return 0;
    }
    // The item is the rightmost thing in the bar, beside the clock.
    const WindowFacts bar = x().viewableOfClass(menuBarClass).front();
    // A click that comes before the bar has placed its item does nothing.
    constexpr double whileItOpens = 3;
    for (int clicks = 0; clicks < 3; ++clicks) {
        x().click(bar.x + bar.width - statusItemFromRight, bar.y + bar.height / 2);
        if (waitUntil([&] { return !x().viewableOfClass(menuClass).empty(); }, whileItOpens)) {
            return x().viewableOfClass(menuClass).front().window;
        }
    }
    return 0;
}

std::vector<WindowFacts> SessionTest::alerts() {
    std::vector<WindowFacts> found = x().windows();
    std::erase_if(found, [](const WindowFacts& facts) {
        const bool dialog =
            std::find(facts.types.begin(), facts.types.end(), "_NET_WM_WINDOW_TYPE_DIALOG") != facts.types.end();
        return !facts.viewable || !dialog || facts.instance.rfind("rookbay", 0) != 0 || facts.title == settingsTitle;
    });
    return found;
}

QJsonObject SessionTest::defaults() const {
    const std::string text = readFile(session_.defaultsFile()).value_or("");
    return QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
}

} // namespace rb
