#include "tests/displays/DisplaysFixture.h"

namespace rb {

namespace {

constexpr const char* started = "{\"ok\":true,\"trial\":true}\n";
constexpr const char* kept = "{\"ok\":true,\"kept\":true}\n";
constexpr const char* incomplete = "显示模式未完成";
constexpr const char* fallback = "请在系统设置中检查显示器；模块未返回确认。";
constexpr const char* mismatch = "辅助模块已退出，但读回的实际模式与选择不一致。请检查当前分辨率；未标记为成功。";
constexpr std::size_t keepButton = 0;
constexpr std::size_t restoreButton = 1;

// The external display's picker holds 11 (HiDPI, current), 10 (3840) and 12 (1920).
class TrialTest : public DisplaysTest {
protected:
    // Selects the 3840 mode and presses the button; the helper.
    std::shared_ptr<VirtualChild> begin() {
        opened();
        window().selectItem(pickerIdentifier(1), 1);
        controller().applyResolution(1);
        const auto running = desktop_.childProcesses().running("ResolutionHelper");
        return running.empty() ? nullptr : running.front();
    }
    void say(VirtualChild& helper, const std::string& text) {
        helper.say(text);
        desktop_.advance(0);
    }
    void end(VirtualChild& helper) {
        helper.exit();
        desktop_.advance(0);
    }
    void setMode(const DisplayMode& mode) { desktop_.displays().setCurrentMode(7, mode); }
    std::string alert() { return window().sheet() ? window().sheet()->messageText : ""; }
    std::string information() { return window().sheet() ? window().sheet()->informativeText : ""; }
};

TEST_F(TrialTest, IsKeptWhenTheUserSaysSoAndTheDisplayShowsIt) {
    const auto helper = begin();
    ASSERT_TRUE(helper);
    EXPECT_THAT(helper->arguments(), testing::ElementsAre("trial", "7:4268:16857:77", "10"));
    EXPECT_TRUE(controller().busy());
    EXPECT_EQ(alert(), "");
    setMode(modeOf(10, 3840, 2160, 59.94));
    say(*helper, started);
    EXPECT_EQ(alert(), "保留这个显示模式吗？");
    EXPECT_EQ(information(),
              "3840 × 2160 · 普通 · 60.00 Hz\n请确认画面正常。20 秒内未确认将自动恢复原模式；即使 Rook Bay "
              "退出，独立保护模块也会尝试恢复。");
    ASSERT_EQ(window().sheet()->buttons.size(), 2U);
    EXPECT_EQ(window().sheet()->buttons[0].title, "保留");
    EXPECT_EQ(window().sheet()->buttons[1].title, "恢复原模式");
    window().answerSheet(keepButton);
    EXPECT_EQ(helper->input(), "keep\n");
    EXPECT_TRUE(helper->inputClosed());
    EXPECT_TRUE(controller().busy()) << "until the helper is through";
    helper->say(kept);
    end(*helper);
    EXPECT_EQ(alert(), "") << "success needs no words";
    EXPECT_FALSE(controller().busy());
    EXPECT_TRUE(controller().refreshPending());
    desktop_.advance(1.5 + 0.5);
    EXPECT_EQ(controller().rows()[1].resolution, "3840 × 2160");
}

TEST_F(TrialTest, NineteenSecondsWithoutAnAnswerRestore) {
    const auto helper = begin();
    desktop_.advance(3);
    say(*helper, started);
    desktop_.advance(18.99);
    EXPECT_EQ(alert(), "保留这个显示模式吗？");
    EXPECT_FALSE(helper->inputClosed());
    desktop_.advance(0.01);
    EXPECT_EQ(alert(), "");
    EXPECT_TRUE(helper->inputClosed());
    EXPECT_EQ(helper->input(), "");
    helper->say("{\"ok\":true,\"kept\":false,\"message\":\"已恢复\"}");
    end(*helper);
    EXPECT_EQ(alert(), "") << "restored as asked";
}

TEST_F(TrialTest, TheUserRestores) {
    const auto helper = begin();
    say(*helper, started);
    window().answerSheet(restoreButton);
    EXPECT_EQ(helper->input(), "");
    EXPECT_TRUE(helper->inputClosed());
    helper->say("{\"ok\":false,\"message\":\"无法恢复\"}");
    end(*helper);
    EXPECT_EQ(alert(), incomplete);
    EXPECT_EQ(information(), "无法恢复");
    EXPECT_TRUE(window().sheet()->buttons.empty());
}

TEST_F(TrialTest, AClaimOfSuccessIsCheckedAgainstTheDisplay) {
    struct Case {
        const char* name;
        std::function<void()> happens;
    };
    const std::vector<Case> cases{
        {"another mode", [this] { setMode(modeOf(12, 1920, 1080, 60)); }},
        {"another rate", [this] { setMode(modeOf(10, 3840, 2160, 50)); }},
        {"no mode",
         [this] {
             ConnectedDisplay dark = external();
             dark.currentMode.reset();
             desktop_.displays().set({builtin(), dark});
         }},
        {"another display",
         [this] {
             ConnectedDisplay other = external();
             other.identity.serial = 78;
             other.currentMode = modeOf(10, 3840, 2160, 60);
             desktop_.displays().set({builtin(), other});
         }},
        {"no display", [this] { desktop_.displays().set({builtin()}); }},
    };
    for (const Case& tested : cases) {
        SCOPED_TRACE(tested.name);
        setDisplays({builtin(), external()});
        desktop_.advance(5);
        const auto helper = begin();
        ASSERT_TRUE(helper);
        say(*helper, started);
        tested.happens();
        window().answerSheet(keepButton);
        helper->say(kept);
        end(*helper);
        EXPECT_EQ(alert(), incomplete);
        EXPECT_EQ(information(), mismatch);
        window().answerSheet(0);
        desktop_.advance(5);
    }
}

TEST_F(TrialTest, AHelperThatDoesNotTryEndsWithItsMessage) {
    struct Case {
        const char* output;
        std::string information;
    };
    for (const Case& tested : std::vector<Case>{{"{\"ok\":false,\"message\":\"没有这个模式\"}\n", "没有这个模式"},
                                                {"{\"ok\":true}\n{\"ok\":false}", fallback},
                                                {"nonsense\n", fallback},
                                                {"", fallback},
                                                {"{\"ok\":false,\"message\":\"无换行\"}", "无换行"}}) {
        SCOPED_TRACE(tested.output);
        const auto helper = begin();
        ASSERT_TRUE(helper);
        say(*helper, tested.output);
        end(*helper);
        EXPECT_EQ(alert(), incomplete);
        EXPECT_EQ(information(), tested.information);
        window().answerSheet(0);
        desktop_.advance(5);
    }
}

TEST_F(TrialTest, AHelperThatLeavesWithoutALastWordIsNoSuccess) {
    const auto helper = begin();
    say(*helper, started);
    end(*helper); // killed, say: the question goes with it
    EXPECT_EQ(alert(), incomplete);
    EXPECT_EQ(information(), fallback);
    EXPECT_FALSE(controller().busy());
}

TEST_F(TrialTest, TheFirstLineHasEightSeconds) {
    const auto helper = begin();
    say(*helper, "{\"ok\":true,");
    desktop_.advance(7.99);
    EXPECT_FALSE(helper->inputClosed());
    desktop_.advance(0.01);
    EXPECT_TRUE(helper->inputClosed());
    say(*helper, "\"trial\":true}\n");
    EXPECT_EQ(alert(), "") << "too late";
    helper->say("{\"ok\":false,\"message\":\"超时\"}");
    end(*helper);
    EXPECT_EQ(information(), fallback) << "the rest of the line and the last word are no JSON together";
}

TEST_F(TrialTest, ALineTooLongIsCutAndUnderstoodAsItStands) {
    const auto fits = begin();
    std::string line = "{\"ok\":true,\"trial\":true,\"x\":\"";
    line += std::string(4095 - line.size() - 2, 'x') + "\"}";
    for (std::size_t at = 0; at < line.size(); at += 1000) {
        say(*fits, line.substr(at, 1000)); // in pieces
    }
    say(*fits, "\n");
    EXPECT_EQ(alert(), "保留这个显示模式吗？") << "4095 bytes and the newline";
    end(*fits);
    window().answerSheet(0);
    desktop_.advance(5);

    const auto tooLong = begin();
    say(*tooLong, std::string(4096, ' ') + started);
    EXPECT_EQ(alert(), "");
    EXPECT_TRUE(tooLong->inputClosed());
    end(*tooLong);
}

TEST_F(TrialTest, NothingBeginsWithoutAReason) {
    opened();
    const auto before = desktop_.childProcesses().commands();
    controller().applyResolution(1); // the current mode is selected
    controller().applyResolution(2);
    window().selectItem(pickerIdentifier(1), 1);
    desktop_.childProcesses().uninstall("ResolutionHelper");
    controller().applyResolution(1);
    desktop_.childProcesses().install("ResolutionHelper");
    controller().sleep(1);
    controller().applyResolution(1); // busy
    EXPECT_EQ(desktop_.childProcesses().commands().size(), before.size() + 1);
    desktop_.advance(1);
    EXPECT_TRUE(window().sheets().empty());
}

TEST_F(TrialTest, AHelperThatCannotStartIsReported) {
    opened();
    window().selectItem(pickerIdentifier(1), 1);
    desktop_.childProcesses().setStartsFail(true);
    controller().applyResolution(1);
    EXPECT_EQ(alert(), "无法启动分辨率模块");
    EXPECT_FALSE(controller().busy());
}

TEST_F(TrialTest, QuittingInTheMiddleClosesTheHelpersInput) {
    const auto helper = begin();
    say(*helper, started);
    controller_.reset();
    EXPECT_TRUE(helper->inputClosed());
    EXPECT_EQ(helper->input(), "");
    EXPECT_FALSE(helper->wasKilled()) << "it has the old mode to restore";
    desktop_.advance(30);
    EXPECT_TRUE(desktop_.runLoop().pendingTimers().empty());
}

TEST_F(TrialTest, ChangesDuringATrialWaitForItsEnd) {
    const auto helper = begin();
    say(*helper, started);
    desktop_.displays().notify(); // the mode change itself
    desktop_.advance(5);
    EXPECT_EQ(passes(), 1);
    window().answerSheet(restoreButton);
    helper->say("{\"ok\":true,\"kept\":false}");
    end(*helper);
    desktop_.advance(1.49);
    EXPECT_EQ(passes(), 1);
    desktop_.advance(0.5);
    EXPECT_EQ(passes(), 2);
}

} // namespace

} // namespace rb
