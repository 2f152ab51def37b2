#include "displays/Standby.h"

#include "tests/displays/DisplaysFixture.h"

namespace rb {

namespace {

constexpr const char* noChannel = "未识别到硬件控制通道；可能是虚拟屏幕或连接不支持。";
constexpr const char* unreachable = "待机后屏幕已不可达；可以尝试唤醒，失败时请按显示器电源键。";

class StandbyTest : public DisplaysTest {
protected:
    void pass() {
        controller().refresh();
        desktop_.advance(0.5);
    }
};

TEST_F(StandbyTest, EachKindOfDisplayIsWorded) {
    answers_["list"] = R"([{"id":1,"uuid":"bus-1"},{"id":7,"uuid":"bus-3"},{"id":7,"uuid":"bus-9"}])";
    opened();
    EXPECT_EQ(status(0), "内置屏幕不支持此单屏 DDC 待机方式。") << "even when it is listed";
    EXPECT_EQ(controller().rows()[0].uuid, "");
    EXPECT_EQ(status(1), "单屏待机可用");
    EXPECT_EQ(controller().rows()[1].uuid, "bus-3") << "the first match";
    EXPECT_TRUE(controller().rows()[1].supported);
    EXPECT_THAT(desktop_.childProcesses().commands(),
                testing::ElementsAre("CableHelper", "DisplayHelper list", "DisplayHelper probe bus-3"));

    answers_["probe"] = R"({"ok":false,"message":"没有回应"})";
    pass();
    EXPECT_EQ(status(1), "没有回应");
    EXPECT_FALSE(controller().rows()[1].supported);
    answers_["probe"] = R"({})";
    pass();
    EXPECT_EQ(status(1), "(none)");

    for (const char* list : {R"({"ok":false,"message":"x"})", "[]", R"([{"id":7,"uuid":""}])", "garbage"}) {
        answers_["list"] = list;
        pass();
        EXPECT_EQ(status(1), noChannel) << list;
        EXPECT_EQ(status(0), "内置屏幕不支持此单屏 DDC 待机方式。");
    }
    desktop_.childProcesses().uninstall("DisplayHelper");
    pass();
    EXPECT_EQ(status(1), "Intel Mac 暂不支持单屏硬件控制，全部熄屏仍可使用。");
}

TEST_F(StandbyTest, AnAdapterExplainsAProbeWithoutAnswer) {
    snapshot_ = R"({"ports":[{"displays":[{"monitorName":"DELL U2723QE","branchDevice":"Hub A"},
                  {"monitorName":"Other","branchDevice":"Hub B"}]},
                  {"displays":[{"monitorName":"DELL U2723QE","branchDevice":"Hub C"},{"monitorName":"DELL U2723QE"}]}]})";
    answers_["probe"] = R"({"ok":false,"message":"没有回应"})";
    opened();
    EXPECT_EQ(status(1), "已识别显示器，经 Hub C 转接；当前连接未返回有效 DDC 响应，单屏待机不可用。");
    answers_["probe"] = R"({"ok":true})";
    pass();
    EXPECT_EQ(status(1), "单屏待机可用");
}

TEST_F(StandbyTest, ACommandTellsItsWayAndItsOutcome) {
    opened();
    controller().sleep(1);
    EXPECT_EQ(status(1), "正在发送电源命令…");
    EXPECT_TRUE(controller().busy());
    controller().wake(1); // one at a time
    controller().refresh();
    desktop_.advance(0.5);
    EXPECT_EQ(desktop_.childProcesses().commands().back(), "DisplayHelper sleep bus-3");
    EXPECT_EQ(status(1), "已进入待机");
    EXPECT_TRUE(controller().rows()[1].sleepRequested);
    EXPECT_FALSE(controller().busy());
    pass();
    EXPECT_TRUE(controller().rows()[1].sleepRequested) << "from pass to pass";

    answers_["wake"] = R"({"ok":true,"verified":false,"message":"已发送，未确认"})";
    controller().wake(1);
    desktop_.advance(0.5);
    EXPECT_EQ(status(1), "已发送，未确认");
    EXPECT_TRUE(controller().rows()[1].sleepRequested);
    answers_["wake"] = R"({"ok":false,"verified":true,"message":"失败"})";
    controller().wake(1);
    desktop_.advance(0.5);
    EXPECT_TRUE(controller().rows()[1].sleepRequested);
    answers_["wake"] = R"({"ok":true,"verified":true,"message":"已唤醒"})";
    controller().wake(1);
    desktop_.advance(0.5);
    EXPECT_FALSE(controller().rows()[1].sleepRequested);
}

TEST_F(StandbyTest, RowsWithoutAChannelTakeNoCommand) {
    opened();
    const auto before = desktop_.childProcesses().commands();
    controller().sleep(0);
    controller().sleep(2);
    desktop_.advance(1);
    EXPECT_EQ(desktop_.childProcesses().commands(), before);
    EXPECT_FALSE(controller().busy());
}

TEST_F(StandbyTest, ADisplayThatVanishesInStandbyStaysOnceAndCanBeWoken) {
    opened();
    controller().sleep(1);
    desktop_.advance(0.5);
    setDisplays({builtin()});
    answers_["list"] = "[]";
    for (int round = 0; round < 3; ++round) {
        pass();
        ASSERT_EQ(controller().rows().size(), 2U);
        EXPECT_EQ(status(1), unreachable);
        EXPECT_FALSE(controller().rows()[1].online);
        EXPECT_EQ(controller().rows()[1].uuid, "bus-3");
    }
    controller().wake(1);
    desktop_.advance(0.5);
    EXPECT_EQ(desktop_.childProcesses().commands().back(), "DisplayHelper wake bus-3");
    EXPECT_EQ(status(1), "已唤醒");
    pass();
    EXPECT_EQ(controller().rows().size(), 1U) << "nobody asked for standby any more";
}

TEST_F(StandbyTest, ADisplayThatReturnsKeepsItsMark) {
    opened();
    controller().sleep(1);
    desktop_.advance(0.5);
    setDisplays({builtin()});
    pass();
    setDisplays({builtin(), external(9)});
    answers_["list"] = R"([{"id":9,"uuid":"bus-3"}])";
    pass();
    ASSERT_EQ(controller().rows().size(), 2U);
    EXPECT_TRUE(controller().rows()[1].online);
    EXPECT_TRUE(controller().rows()[1].sleepRequested);
    EXPECT_EQ(status(1), "单屏待机可用");
}

} // namespace

} // namespace rb
