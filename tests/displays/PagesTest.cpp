#include "displays/Pages.h"

#include "tests/displays/DisplaysFixture.h"

namespace rb {

namespace {

// Pages as texts, from rows and snapshots of the test's own.
class PagesTest : public testing::Test {
protected:
    std::string page(bool busy = false) {
        const PageState state{.rows = rows_,
                              .connections = snapshot_,
                              .busy = busy,
                              .selectedPage = selected_,
                              .technicalDetails = details_};
        return dump({.content = pageStack(state, {}, cards_)});
    }
    void read(const char* json) { snapshot_ = *parseSnapshot(json); }

    std::vector<DisplayRow> rows_;
    ConnectionSnapshot snapshot_;
    int selected_ = displaysPage;
    bool details_ = false;
    CardPool cards_;
};

TEST_F(PagesTest, DisplaysOfEveryKind) {
    ConnectedDisplay builtin = *VirtualDisplays().display(1);
    DisplayRow first = rowOf(builtin);
    DisplayRow second = rowOf({.identity = {.id = 7}, .name = "DELL", .currentMode = modeOf(3, 1920, 1080, 0)});
    second.supported = true;
    second.status = "单屏待机可用";
    DisplayRow gone = rowOf({.identity = {.id = 9}, .name = "LG"});
    gone.online = false;
    gone.sleepRequested = true;
    rows_ = {first, second, gone};
    read(R"({"ports":[{"name":"左后","displays":[{"monitorName":"DELL"}],"transports":{"active":["CC","DisplayPort"]}},
             {"displays":[{"monitorName":"LG"}],"transports":{"active":["CC","USB2"]}}]})");
    const std::string text = R"(显示器
[刷新]
~3 块显示器
Built-in
~显示器 1 · 主屏幕 · 已连接
~渲染像素
2880 × 1800
~刷新率
60 Hz
~连接
未读取到端口映射
* 1440 × 900 · HiDPI · 60.00 Hz
- 1280 × 800 · 普通 · 60.00 Hz
[试用模式]
~等待检测
[识别]
(熄屏待机)
(唤醒)
DELL
~显示器 2 · 已连接
~渲染像素
1920 × 1080
~刷新率
系统未报告
~连接
USB-C / DP 视频
? 此连接仅提供系统已有的普通分辨率。
(试用模式)
+单屏待机可用
端口：左后
[识别]
[熄屏待机]
[唤醒]
LG
~显示器 3 · 暂不可达
~渲染像素
未知
~刷新率
未知
~连接
CC + USB2
~等待检测
端口：未知
(识别)
(熄屏待机)
[唤醒]
)";
    EXPECT_EQ(page(), text);
    const std::string busy = page(true);
    EXPECT_THAT(busy, testing::HasSubstr("(检测中…)"));
    EXPECT_THAT(busy, testing::HasSubstr("(picker disabled)"));
    EXPECT_THAT(busy, testing::Not(testing::HasSubstr("[识别]")));
    EXPECT_THAT(busy, testing::Not(testing::HasSubstr("[唤醒]")));
}

TEST_F(PagesTest, NoDisplays) {
    EXPECT_EQ(page(), "显示器\n[刷新]\n~0 块显示器\n还没有检测到显示器\n连接屏幕后，点击刷新。\n");
}

TEST_F(PagesTest, NoConnections) {
    selected_ = connectionsPage;
    EXPECT_EQ(page(), "线缆与供电\n[刷新]\n~0 块显示器\n暂无 USB-C 连接详情\n连接 USB-C 设备后刷新。普通 HDMI "
                      "线缆通常不会报告品牌、型号或功率规格。\n[ ] 显示更多技术详情\n");
    EXPECT_THAT(page(true), testing::HasSubstr("正在读取连接…\n连接 USB-C 设备后刷新。"));
    snapshot_.error = "连接诊断模块未安装。";
    EXPECT_THAT(page(), testing::HasSubstr("暂无 USB-C 连接详情\n连接诊断模块未安装。\n"));
    read(R"({"ports":[{"name":"空","connectionActive":false}]})");
    EXPECT_THAT(page(), testing::HasSubstr("暂无 USB-C 连接详情"));
    EXPECT_THAT(page(), testing::Not(testing::HasSubstr("空\n")));
    details_ = true;
    EXPECT_THAT(page(), testing::EndsWith("[x] 显示更多技术详情\n~芯片声明规格；协商功率非实时耗电。诊断基于 WhatCable "
                                          "公开模块。\n"));
}

constexpr const char* fullPort = R"json({"ports":[{"name":"端口 1","connectionActive":true,
    "transports":{"active":["CC","USB2","DisplayPort"]},
    "displays":[{"monitorName":"DELL","branchDevice":"Hub","sinkType":"HDMI","lanes":4,"rate":"HBR2"},{}],
    "cable":{"maxWatts":100,"speed":"USB 3.2 Gen 2 (10 Gbps)","vendorName":"Cable Co","vendorID":1452,
             "currentRating":"5 A","maxVolts":20,"certification":{"listings":[{"model":"C100"}]}},
    "powerSources":[{"name":"USB-PD","negotiated":{"powerW":59.96,"voltageV":20,"currentA":2.998},"maxPowerW":96}],
    "charging":{"summary":"Plugged in, charging on hold"},
    "devices":[{"name":"硬盘","speed":"10 Gbps"},{}]}]})json";

TEST_F(PagesTest, APortWithEverything) {
    selected_ = connectionsPage;
    read(fullPort);
    const std::string head =
        "线缆与供电\n[刷新]\n~0 块显示器\n端口 1\n~USB 2.0 数据 · DisplayPort 视频\n~线缆声明速度\n"
        "10 Gbps\n~线缆功率上限\n100 W\n~当前协商功率\n60.0 W\n线缆芯片厂商：Cable "
        "Co\n认证登记型号：C100\n";
    EXPECT_EQ(page(), head + "电源上限：96 W\n+已接入电源 · 充电暂缓\n显示器：DELL · 经 Hub 转接 · HDMI 输出\n"
                             "显示器：未知\n连接设备\n硬盘 · 10 Gbps\nUSB 设备 · 速率未知\n[ ] 显示更多技术详情\n");
    details_ = true;
    EXPECT_THAT(page(),
                testing::StartsWith(
                    head + "电源上限：96 W · 20.00 V × 3.00 A\n+已接入电源 · 充电暂缓\n显示器：DELL · 经 Hub 转接 "
                           "· HDMI 输出\n4 条 DP 视频通道 · 并行数据 USB 2.0\n视频链路：4 条通道 · HBR2\n"
                           "显示器：未知\n视频链路：未知 条通道 · 速率未知\n连接设备\n硬盘 · 10 Gbps\nUSB 设备 "
                           "· 速率未知\n线缆规格：USB 3.2 Gen 2 (10 Gbps)\n额定电流：5 A · 额定电压：20 V · "
                           "VID：0x05AC\n[x]"));
}

TEST_F(PagesTest, APortThatReportsNothingClaimsNothing) {
    selected_ = connectionsPage;
    read(R"({"ports":[{"connectionActive":true}]})");
    EXPECT_THAT(page(),
                testing::HasSubstr("USB-C 端口\n~已连接 · 传输协议信息未知\n~线缆声明速度\n未知\n~线缆功率上限\n"
                                   "未知\n~当前协商功率\n未报告\n[ ]"));
    details_ = true;
    EXPECT_THAT(page(), testing::HasSubstr("未读取到线缆电子标记。"));
    read(R"({"ports":[{"connectionActive":true,"cable":{},"charging":{"summary":"Charging"}}]})");
    EXPECT_THAT(page(), testing::HasSubstr("线缆芯片厂商：未知\n线缆规格：未知\n额定电流：未知 · 额定电压：未知 V · "
                                           "VID：0x0000\n"));
}

TEST_F(PagesTest, AVideoPortShowsVideoAlone) {
    selected_ = connectionsPage;
    read(R"({"ports":[{"name":"HDMI","connectionActive":true,"videoOnly":true,"displays":[{"monitorName":"LG"},{}],
             "cable":{},"devices":[{}]}]})");
    EXPECT_THAT(page(), testing::HasSubstr("HDMI\n~已连接 · 传输协议信息未知\n显示器：LG\n显示器：未知\n[ ]"));
    details_ = true;
    EXPECT_THAT(page(), testing::HasSubstr("显示器：未知\n此接口不报告线缆型号或供电规格。\n[x]"));
}

} // namespace

} // namespace rb
