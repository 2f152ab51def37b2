#include "displays/HelperRunner.h"

#include "tests/displays/DisplaysFixture.h"

namespace rb {

namespace {

class HelperRunnerTest : public testing::Test {
protected:
    std::string message() {
        std::string text = "(no answer)";
        runner_.run({"list"}, [&](const HelperAnswer& answer) {
            text = (answer.ok ? "ok " : "") + answer.message.value_or("(none)");
        });
        EXPECT_EQ(text, "(no answer)") << "never at once";
        desktop_.advance(20);
        return text;
    }
    std::string error() {
        std::string text = "(no answer)";
        runner_.readConnections([&](const ConnectionSnapshot& snapshot) { text = snapshot.error.value_or("(none)"); });
        desktop_.advance(20);
        EXPECT_TRUE(desktop_.childProcesses().temporaryFiles().empty()) << "the file is always deleted";
        return text;
    }
    void answer(const std::string& name, const std::string& text) {
        desktop_.childProcesses().install(name, [text](VirtualChild& child) {
            child.say(text);
            child.exit();
        });
    }

    VirtualDesktop desktop_;
    HelperRunner runner_{desktop_.services()};
};

TEST_F(HelperRunnerTest, EveryFailureOfTheDisplayHelperIsAText) {
    EXPECT_EQ(message(), "此版本的单屏硬件控制支持 Apple 芯片 Mac；Intel 仍可使用全部熄屏。");
    for (const char* garbage : {"", "ok", "{\"ok\":true", "{}{}", "\"text\""}) {
        answer("DisplayHelper", garbage);
        EXPECT_EQ(message(), "控制模块未返回有效数据。") << garbage;
    }
    answer("DisplayHelper", R"({"ok":true,"message":"好"})");
    EXPECT_EQ(message(), "ok 好");
    answer("DisplayHelper", "{\"message\":\"" + std::string(std::size_t{9} * 1024 * 1024, 'x') + "\"}");
    EXPECT_EQ(message(), "控制模块未返回有效数据。") << "nobody needs as much";
    desktop_.childProcesses().setStartsFail(true);
    EXPECT_EQ(message(), "无法启动显示器控制模块。");
}

TEST_F(HelperRunnerTest, AHelperThatHangsIsKilledAfterFiveSeconds) {
    desktop_.childProcesses().install("DisplayHelper", [](VirtualChild& child) {
        child.say(R"({"ok":true,"message":"too late"})");
        child.setDiesOfKill(false);
    });
    std::string text;
    runner_.run({"probe", "1"}, [&](const HelperAnswer& answer) { text = answer.message.value_or(""); });
    desktop_.advance(4.99);
    const auto child = desktop_.childProcesses().children().at(0);
    EXPECT_FALSE(child->wasKilled());
    desktop_.advance(0.01);
    EXPECT_TRUE(child->wasKilled());
    EXPECT_EQ(text, "") << "its exit is awaited";
    child->exit();
    desktop_.advance(0);
    EXPECT_EQ(text, "显示器响应超时，请检查连接。");
}

TEST_F(HelperRunnerTest, EveryFailureOfTheCableHelperIsAText) {
    EXPECT_EQ(error(), "连接诊断模块未安装。");
    for (const char* garbage : {"", "[]", "[{\"ports\":[]}]", "nonsense"}) {
        answer("CableHelper", garbage);
        EXPECT_EQ(error(), "连接信息暂时不可用。") << garbage;
    }
    answer("CableHelper", "{}");
    EXPECT_EQ(error(), "(none)");
    desktop_.childProcesses().setStartsFail(true);
    EXPECT_EQ(error(), "连接信息暂时不可用。") << "as a helper that wrote nothing";
    desktop_.childProcesses().setTemporaryFilesFail(true);
    EXPECT_EQ(error(), "无法创建连接快照。");
    desktop_.hardware().setTellsOfConnections(false);
    EXPECT_EQ(error(), "线缆详情需要 Apple 芯片 Mac 和 macOS 14 或更新版本。");
}

TEST_F(HelperRunnerTest, TheCableHelperHasTwelveSeconds) {
    desktop_.childProcesses().install("CableHelper", [](VirtualChild& child) { child.say("{}"); });
    std::string text;
    runner_.readConnections([&](const ConnectionSnapshot& snapshot) { text = snapshot.error.value_or(""); });
    desktop_.advance(11.99);
    EXPECT_EQ(text, "");
    ASSERT_EQ(desktop_.childProcesses().temporaryFiles().size(), 1U);
    EXPECT_THAT(desktop_.childProcesses().temporaryFiles().begin()->first,
                testing::MatchesRegex("/tmp/rookbay-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"
                                      "\\.json"));
    desktop_.advance(0.01);
    EXPECT_EQ(text, "连接检测超时，请稍后刷新。");
    EXPECT_TRUE(desktop_.childProcesses().children().at(0)->wasKilled());
}

TEST(HelperRunnerEndTest, EndsAHelperUnderWayAndTellsNobody) {
    VirtualDesktop desktop;
    desktop.childProcesses().install("CableHelper");
    bool told = false;
    {
        HelperRunner runner(desktop.services());
        runner.readConnections([&](const ConnectionSnapshot&) { told = true; });
        desktop.advance(1);
    }
    desktop.advance(20);
    EXPECT_FALSE(told);
    EXPECT_TRUE(desktop.childProcesses().children().at(0)->wasKilled());
    EXPECT_TRUE(desktop.childProcesses().temporaryFiles().empty());
}

} // namespace

} // namespace rb
