#include "tests/session/SessionTest.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <xkbcommon/xkbcommon-keysyms.h>

// The program among processes: starting twice, ending, arguments, and surroundings that are not as they should be.
namespace rb {

namespace {

namespace fs = std::filesystem;

class ProcessTest : public SessionTest {
protected:
    // Runs it with an environment that lacks some variables, until it ends.
    Program& runWithout(const std::vector<std::string>& missing, const std::vector<std::string>& arguments) {
        Environment environment = session().environment;
        for (const std::string& name : missing) {
            environment.erase(name);
        }
        std::vector<std::string> command{ROOKBAY_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return session().start(command, environment);
    }
    // 0 while it is closed.
    xcb_window_t connectionsWindow() {
        const auto windows = x().windows();
        const auto found = std::find_if(windows.begin(), windows.end(), [](const WindowFacts& facts) {
            return facts.viewable && facts.title == "Rook Bay · 屏幕与连接";
        });
        return found == windows.end() ? 0 : found->window;
    }
    std::size_t bars() { return x().viewableOfClass(menuBarClass).size(); }
};

TEST_F(ProcessTest, ASecondStartHandsOverToTheFirst) {
    Program& first = startRookBay();
    EXPECT_EQ(launch().waitForExit(2), 0);
    ASSERT_TRUE(waitUntil([this] { return connectionsWindow() != 0; })) << "the first opens it";
    x().requestClose(connectionsWindow());
    ASSERT_TRUE(waitUntil([this] { return connectionsWindow() == 0; }));
    EXPECT_EQ(launch({"--connections"}).waitForExit(2), 0);
    EXPECT_TRUE(waitUntil([this] { return connectionsWindow() != 0; }));
    EXPECT_EQ(bars(), 1U);

    first.signal(SIGKILL);
    EXPECT_EQ(first.waitForExit(), 128 + SIGKILL);
    Program& next = startRookBay({"--connections"});
    EXPECT_TRUE(waitUntil([this] { return connectionsWindow() != 0; })) << "opened at launch";
    EXPECT_TRUE(next.isRunning());
}

TEST_F(ProcessTest, ManyStartsAtOnceLeaveOneRunning) {
    std::vector<Program*> programs;
    for (int i = 0; i < 6; ++i) {
        programs.push_back(&launch());
    }
    const auto running = [&] {
        return std::count_if(programs.begin(), programs.end(), [](Program* program) { return program->isRunning(); });
    };
    EXPECT_TRUE(waitUntil([&] { return running() == 1 && bars() == 1; }));
    EXPECT_TRUE(staysTrue([&] { return running() == 1; }, 0.2));
    for (Program* program : programs) {
        if (!program->isRunning()) {
            EXPECT_EQ(program->exitCode(), 0);
        }
    }
    EXPECT_TRUE(alerts().empty());
}

TEST_F(ProcessTest, TerminationSignalsAreAnOrderlyEnd) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(signal);
        Program& program = startRookBay();
        program.signal(signal);
        EXPECT_EQ(program.waitForExit(2), 0);
        EXPECT_FALSE(x().isKeyHeld(XKB_KEY_F13));
        EXPECT_EQ(bars(), 0U);
    }
}

TEST_F(ProcessTest, QuittingFromTheMenuEndsIt) {
    Program& program = startRookBay();
    ASSERT_NE(openMenu(), 0U);
    x().tapKey(XKB_KEY_q, {XKB_KEY_Control_L});
    EXPECT_EQ(program.waitForExit(2), 0);
    EXPECT_FALSE(x().isKeyHeld(XKB_KEY_F13));
}

TEST_F(ProcessTest, ArgumentsNeedNoSession) {
    const std::vector<std::string> noSession{"DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"};
    Program& help = runWithout(noSession, {"--help"});
    EXPECT_EQ(help.waitForExit(2), 0);
    EXPECT_THAT(help.output(), testing::HasSubstr("--connections"));
    Program& version = runWithout(noSession, {"--version"});
    EXPECT_EQ(version.waitForExit(2), 0);
    EXPECT_THAT(version.output(), testing::HasSubstr(ROOKBAY_VERSION));
    Program& unknown = runWithout(noSession, {"--no-such-thing"});
    EXPECT_EQ(unknown.waitForExit(2), 2);
    EXPECT_THAT(unknown.output(), testing::HasSubstr("--no-such-thing"));
    Program& displayless = runWithout({"DISPLAY"}, {});
    EXPECT_EQ(displayless.waitForExit(2), 1);
    EXPECT_THAT(displayless.output(), testing::HasSubstr("DISPLAY"));
}

TEST_F(ProcessTest, WithoutABusItStillLocks) {
    useCountingLocker();
    session().environment.erase("DBUS_SESSION_BUS_ADDRESS");
    session().environment["XDG_RUNTIME_DIR"] = session().folder() + "/nowhere";
    startRookBay();
    x().tapKey(XKB_KEY_F13);
    EXPECT_TRUE(waitForLockings(1));
}

TEST_F(ProcessTest, TheBusMayEndMeanwhile) {
    useCountingLocker();
    Program& program = startRookBay();
    session().endBus();
    x().tapKey(XKB_KEY_F13);
    EXPECT_TRUE(waitForLockings(1));
    EXPECT_TRUE(program.isRunning());
}

TEST_F(ProcessTest, ABrokenSettingsFileIsSetAside) {
    const std::string broken = "{\"HotKeyCode\": 37, \"HotKeyModi";
    session().writeDefaults(broken);
    Program& program = startRookBay();
    EXPECT_THAT(program.output(), testing::HasSubstr("Rook Bay: "));
    bool kept = false;
    for (const auto& entry : fs::directory_iterator(session().configFolder() + "/rook-bay")) {
        kept = kept || readFile(entry.path()) == broken;
    }
    EXPECT_TRUE(kept) << "what the user had is still there";
}

TEST_F(ProcessTest, AFileInTheFoldersPlaceIsLeftAlone) {
    // Nothing can be stored here, and nothing of the user's is harmed.
    const std::string place = session().configFolder() + "/rook-bay";
    fs::remove_all(place);
    writeFile(place, "mine");
    Program& program = startRookBay();
    // To a program without settings this is its first run: it introduces itself and asks about screenshots.
    ASSERT_TRUE(waitUntil([this] { return !x().viewableOfClass("rookbay-popover").empty(); }));
    ASSERT_TRUE(waitUntil([this] {
        const auto shown = alerts();
        return shown.size() == 1 && x().hasFocus(shown[0].window);
    }));
    x().tapKey(XKB_KEY_Escape);
    ASSERT_TRUE(waitUntil([this] { return alerts().empty(); }));
    x().tapKey(XKB_KEY_Escape);
    ASSERT_TRUE(waitUntil([this] { return x().viewableOfClass("rookbay-popover").empty(); }));
    ASSERT_NE(openMenu(), 0U);
    x().tapKey(XKB_KEY_comma, {XKB_KEY_Control_L});
    ASSERT_TRUE(waitUntil([this] {
        const auto window = x().viewableTitled(settingsTitle);
        return window && x().focus() == window->window;
    }));
    x().tapKey(XKB_KEY_l, {XKB_KEY_Control_L, XKB_KEY_Alt_L});
    const auto window = *x().viewableTitled(settingsTitle);
    x().click(window.x + window.width - 26 - 25, window.y + window.height - 20 - 12);
    EXPECT_TRUE(waitUntil([this] { return x().isKeyHeld(XKB_KEY_l, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1); }))
        << "the new key works for this run";
    EXPECT_EQ(readFile(place), "mine");
    EXPECT_TRUE(program.isRunning());
    EXPECT_THAT(program.output(), testing::HasSubstr("Rook Bay: "));
}

TEST_F(ProcessTest, SettingsThatAreNoFileAreLeftAlone) {
    fs::remove(session().defaultsFile());
    fs::create_directories(session().defaultsFile() + "/inner");
    Program& program = startRookBay();
    EXPECT_TRUE(fs::is_directory(session().defaultsFile() + "/inner"));
    EXPECT_TRUE(program.isRunning());
}

} // namespace

} // namespace rb
