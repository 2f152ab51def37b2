#include "tests/session/SessionTest.h"

#include <csignal>
#include <xcb/randr.h>

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

TEST_F(DisplaysTest, AKilledHelperIsOutlivedByItsGuardian) {
    startTrial("sleep 30");
    ASSERT_TRUE(waitForMode("1280/"));
    ASSERT_TRUE(waitUntil([this] { return session().processes("ResolutionHelpe").size() == 2; }));
    ::kill(session().processes("ResolutionHelpe").front(), SIGKILL);
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
