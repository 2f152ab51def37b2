#include "tests/session/SessionTest.h"

#include <csignal>
#include <filesystem>
#include <xcb/randr.h>
#include <xkbcommon/xkbcommon-keysyms.h>

// The Screens and connections window and mode trials on an X server with several outputs.
namespace rb {

namespace {

constexpr const char* windowTitle = "Rook Bay · 屏幕与连接";

class DisplaysTest : public SessionTest {
protected:
    DisplaysTest()
        : SessionTest({.dummyOutputs = true}) {}

    // What xrandr says of the outputs that are on: "DUMMY0 1920x1080+0+0".
    std::string outputs() {
        Program& xrandr = session().start({"xrandr", "--listactivemonitors"});
        xrandr.waitForExit();
        return xrandr.output();
    }
    [[nodiscard]] bool waitForMode(const std::string& geometry, double limit = 5) {
        return waitUntil([&] { return outputs().find(geometry) != std::string::npos; }, limit);
    }
    // The identity and the number of the 1280 × 720 mode of the first output, as the helper takes them.
    std::vector<std::string> trialOfSmallMode() {
        xcb_connection_t* connection = x().connection();
        auto* resources = xcb_randr_get_screen_resources_current_reply(
            connection, xcb_randr_get_screen_resources_current(connection, x().root()), nullptr);
        const xcb_randr_mode_info_t* modes = xcb_randr_get_screen_resources_current_modes(resources);
        std::string mode;
        for (int i = 0; i < xcb_randr_get_screen_resources_current_modes_length(resources); ++i) {
            if (mode.empty() && modes[i].width == 1280 && modes[i].height == 720) {
                mode = std::to_string(modes[i].id);
            }
        }
        const auto output = xcb_randr_get_screen_resources_current_outputs(resources)[0];
        std::free(resources); // NOLINT(cppcoreguidelines-no-malloc): xcb's
        return {HELPERS_FOLDER "/ResolutionHelper", "trial", std::to_string(output) + ":0:0:0", mode};
    }
    // A shell that feeds the helper: its input stays open until the shell ends.
    Program& startTrial(const std::string& input) {
        std::string line = "(" + input + ") | exec";
        for (const std::string& word : trialOfSmallMode()) {
            line += " " + word;
        }
        return session().start({"sh", "-c", line});
    }
};

TEST_F(DisplaysTest, TheWindowOpens) {
    startRookBay({"--connections"});
    ASSERT_TRUE(waitUntil([this] { return x().viewableTitled(windowTitle).has_value(); }));
    const auto window = x().viewableTitled(windowTitle);
    EXPECT_EQ(window->width, 920);
    EXPECT_EQ(window->height, 720);
}

TEST_F(DisplaysTest, ATrialIsKeptOrTakenBack) {
    ASSERT_TRUE(waitForMode("1920/")) << outputs();
    Program& kept = startTrial("sleep 0.5; echo keep");
    EXPECT_EQ(kept.waitForExit(), 0);
    EXPECT_TRUE(waitForMode("1280/")) << kept.output();
    EXPECT_NE(kept.output().find("\"kept\":true"), std::string::npos);
    session().start({"xrandr", "--output", "DUMMY0", "--mode", "1920x1080"}).waitForExit();

    Program& ended = startTrial("sleep 0.5; echo nonsense");
    EXPECT_TRUE(waitForMode("1280/"));
    EXPECT_EQ(ended.waitForExit(), 0);
    EXPECT_TRUE(waitForMode("1920/"));
    EXPECT_NE(ended.output().find("\"kept\":false"), std::string::npos);
}

TEST_F(DisplaysTest, OnlyTheWholeWordKeepsTheMode) {
    ASSERT_TRUE(waitForMode("1920/")) << outputs();
    for (const char* input : {"printf keep", "echo keeper", "echo ' keep'",
                              "head -c 5000 /dev/zero | tr '\\0' k; echo keep", "printf 'keep\\0\\n'", "echo KEEP"}) {
        SCOPED_TRACE(input);
        Program& trial = startTrial(std::string(input) + "; sleep 0.2");
        EXPECT_EQ(trial.waitForExit(), 0);
        EXPECT_NE(trial.output().find("\"kept\":false"), std::string::npos) << trial.output();
        EXPECT_NE(outputs().find("1920/"), std::string::npos);
    }
    // Nobody hears that the trial began: it doesn't.
    std::string line;
    for (const std::string& word : trialOfSmallMode()) {
        line += word + " ";
    }
    Program& unheard = session().start({"sh", "-c", "(sleep 5; echo keep) | " + line + " >&-"});
    EXPECT_TRUE(staysTrue([] { return true; }, 0.5));
    EXPECT_NE(outputs().find("1920/"), std::string::npos);
    unheard.end();
    Program& kept = startTrial("printf 'no\\nke'; sleep 0.2; printf 'ep\\nmore'");
    EXPECT_EQ(kept.waitForExit(), 0);
    EXPECT_TRUE(waitForMode("1280/")) << "a line in pieces, after others: " << kept.output();
}

TEST_F(DisplaysTest, AKilledHelperIsOutlivedByItsGuardian) {
    startTrial("sleep 30");
    ASSERT_TRUE(waitForMode("1280/"));
    ASSERT_TRUE(waitUntil([this] { return session().processes("ResolutionHelpe").size() == 2; }));
    ::kill(session().processes("ResolutionHelpe").front(), SIGKILL);
    EXPECT_TRUE(waitForMode("1920/"));
    EXPECT_TRUE(waitUntil([this] { return session().processes("ResolutionHelpe").empty(); }));
}

TEST_F(DisplaysTest, ARestoreLeavesARunningTrialAloneAndUndoesADeadOne) {
    const auto restore = [this] {
        Program& program = session().start({HELPERS_FOLDER "/ResolutionHelper", "restore"});
        program.waitForExit();
        return program.output();
    };
    EXPECT_NE(restore().find("\"ok\":true"), std::string::npos) << "nothing to do";
    startTrial("sleep 30");
    ASSERT_TRUE(waitForMode("1280/"));
    EXPECT_NE(restore().find("\"ok\":false"), std::string::npos);
    EXPECT_NE(outputs().find("1280/"), std::string::npos) << "it still runs";
    const auto processes = session().processes("ResolutionHelpe");
    EXPECT_EQ(processes.size(), 2U);
    for (const pid_t process : processes) {
        ::kill(process, SIGSTOP); // so that the guardian is not faster
    }
    for (const pid_t process : processes) {
        ::kill(process, SIGKILL);
    }
    ASSERT_TRUE(waitUntil([this] { return session().processes("ResolutionHelpe").empty(); }));
    EXPECT_NE(outputs().find("1280/"), std::string::npos) << "nobody is left to take it back";
    EXPECT_NE(restore().find("已恢复"), std::string::npos);
    EXPECT_TRUE(waitForMode("1920/"));
    EXPECT_TRUE(std::filesystem::is_empty(session().folder() + "/runtime/rook-bay"));
}

TEST_F(DisplaysTest, TheProgramIsKilledInTheMiddleOfATrial) {
    startRookBay({"--connections"});
    ASSERT_TRUE(waitUntil([this] { return x().viewableTitled(windowTitle).has_value(); }));
    const auto popUps = [this] {
        std::size_t count = 0;
        for (const WindowFacts& window : x().windows()) {
            count += window.viewable && window.overrideRedirect ? 1 : 0;
        }
        return count;
    };
    // Where the picker is depends on the font: down the middle of the card until a list opens.
    constexpr int middleOfPicker = 517;
    constexpr int middleOfButton = 833;
    constexpr int lowest = 500;
    constexpr double whileItOpens = 0.3;
    const std::size_t before = popUps();
    bool changed = false;
    for (int y = 120; y < lowest && !changed; y += 12) {
        const auto window = x().viewableTitled(windowTitle);
        x().click(window->x + middleOfPicker, window->y + y);
        if (!waitUntil([&] { return popUps() > before; }, whileItOpens)) {
            continue;
        }
        x().tapKey(XKB_KEY_Down);
        x().tapKey(XKB_KEY_Return);
        ASSERT_TRUE(waitUntil([&] { return popUps() == before; }));
        x().click(window->x + middleOfButton, window->y + y);
        changed = waitUntil([this] { return outputs().find("1920/") == std::string::npos; }, 3);
    }
    ASSERT_TRUE(changed) << outputs();
    ASSERT_TRUE(waitUntil([this] { return session().processes("ResolutionHelpe").size() == 2; }));
    ASSERT_EQ(session().processes("rookbay").size(), 1U);
    ::kill(session().processes("rookbay").front(), SIGKILL);
    EXPECT_TRUE(waitForMode("1920/"));
    EXPECT_TRUE(waitUntil([this] { return session().processes("ResolutionHelpe").empty(); }));
}

TEST_F(DisplaysTest, ASignalTakesTheModeBack) {
    Program& trial = startTrial("sleep 30");
    ASSERT_TRUE(waitForMode("1280/"));
    for (const pid_t helper : session().processes("ResolutionHelpe")) {
        ::kill(helper, SIGTERM);
    }
    EXPECT_TRUE(waitForMode("1920/"));
    trial.end();
}

} // namespace

} // namespace rb
