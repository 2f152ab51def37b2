#include "displays/ConnectionCards.h"

#include "displays/Number.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace rb {

namespace {

// A description, or the fallback for a missing or empty one.
std::string value(const std::optional<std::string>& described, const std::string& fallback) {
    return described && !described->empty() ? *described : fallback;
}

bool carries(const Port& port, const std::string& token) {
    return std::find(port.activeTransports.begin(), port.activeTransports.end(), token) != port.activeTransports.end();
}

View powerMetrics(const Port& port, const PowerSource* source) {
    const Cable cable = port.cable.value_or(Cable{});
    return metrics(
        {{"线缆声明速度", shortSpeed(cable.speed)},
         {"线缆功率上限", cable.maxWatts ? plainText(*cable.maxWatts) + " W" : "未知"},
         {"当前协商功率", source && source->negotiated ? fixedText(source->negotiated->powerW, 1) + " W" : "未报告"}});
}

void addCable(StackView& card, const Port& port, bool details) {
    if (!port.cable) {
        if (details) {
            card.children.push_back(text("未读取到线缆电子标记。"));
        }
        return;
    }
    card.children.push_back(text("线缆芯片厂商：" + value(port.cable->vendorName, "未知")));
    if (port.cable->listings.size() == 1) {
        card.children.push_back(text("认证登记型号：" + value(port.cable->listings.front(), "未知")));
    }
}

void addPower(StackView& card, const Port& port, const PowerSource* source, bool details) {
    if (source && source->maxPowerW) {
        std::string line = "电源上限：" + plainText(*source->maxPowerW) + " W";
        if (details && source->negotiated) {
            line += " · " + fixedText(source->negotiated->voltageV, 2) + " V × " +
                    fixedText(source->negotiated->currentA, 2) + " A";
        }
        card.children.push_back(text(std::move(line)));
    }
    if (port.chargingSummary == "Plugged in, charging on hold") {
        card.children.push_back(text("已接入电源 · 充电暂缓", TextColor::SystemGreen));
    }
}

void addDisplayLinks(StackView& card, const Port& port, bool details) {
    for (const DisplayLink& link : port.displays) {
        std::string line = "显示器：" + value(link.monitorName, "未知");
        if (link.branchDevice) {
            line += " · 经 " + *link.branchDevice + " 转接";
        }
        if (link.sinkType) {
            line += " · " + *link.sinkType + " 输出";
        }
        card.children.push_back(text(std::move(line)));
        if (!details) {
            continue;
        }
        if (link.lanes == 4 && carries(port, "USB2") && !carries(port, "USB3")) {
            card.children.push_back(text("4 条 DP 视频通道 · 并行数据 USB 2.0"));
        }
        card.children.push_back(text("视频链路：" + (link.lanes ? std::to_string(*link.lanes) : "未知") + " 条通道 · " +
                                     value(link.rate, "速率未知")));
    }
}

void addDevices(StackView& card, const Port& port) {
    if (port.devices.empty()) {
        return;
    }
    card.children.push_back(heading("连接设备", 13));
    for (const AttachedDevice& device : port.devices) {
        card.children.push_back(text(value(device.name, "USB 设备") + " · " + value(device.speed, "速率未知")));
    }
}

View cableSpecification(const Cable& cable) {
    std::array<char, 16> vendor{};
    std::snprintf(vendor.data(), vendor.size(), "0x%04X", cable.vendorID);
    return text("线缆规格：" + value(cable.speed, "未知") + "\n额定电流：" + value(cable.currentRating, "未知") +
                " · 额定电压：" + value(cable.maxVolts, "未知") + " V · VID：" + vendor.data());
}

View portCard(const Port& port, const PageState& state) {
    const bool details = state.technicalDetails;
    StackView card = vertical();
    card.children.push_back(cardTitle(value(port.name, "USB-C 端口"), "cable.connector", state.blue));
    const std::string transports = transportLabel(port.activeTransports);
    card.children.push_back(
        text(transports.empty() ? "已连接 · 传输协议信息未知" : transports, TextColor::SecondaryLabel));
    if (port.videoOnly) {
        for (const DisplayLink& link : port.displays) {
            card.children.push_back(text("显示器：" + value(link.monitorName, "未知")));
        }
        if (details) {
            card.children.push_back(text("此接口不报告线缆型号或供电规格。"));
        }
        return {.content = std::move(card)};
    }
    const PowerSource* source = powerSource(port.powerSources);
    card.children.push_back(powerMetrics(port, source));
    addCable(card, port, details);
    addPower(card, port, source, details);
    addDisplayLinks(card, port, details);
    addDevices(card, port);
    if (details && port.cable) {
        card.children.push_back(cableSpecification(*port.cable));
    }
    return {.content = std::move(card)};
}

} // namespace

void addConnectionCards(StackView& page, const PageState& state, const PageActions& actions, CardPool& cards) {
    bool any = false;
    for (const Port& port : state.connections.ports) {
        if (port.connectionActive) {
            page.children.push_back(cards.card(portCard(port, state)));
            any = true;
        }
    }
    if (!any) {
        page.children.push_back(
            cards.card(emptyCard(state.busy ? "正在读取连接…" : "暂无 USB-C 连接详情",
                                 value(state.connections.error,
                                       "连接 USB-C 设备后刷新。普通 HDMI 线缆通常不会报告品牌、型号或功率规格。"))));
    }
    page.children.push_back(
        {.content =
             CheckBoxView{.title = "显示更多技术详情", .on = state.technicalDetails, .action = actions.toggleDetails}});
    if (state.technicalDetails) {
        page.children.push_back(fullWidth(
            text("芯片声明规格；协商功率非实时耗电。诊断基于 WhatCable 公开模块。", TextColor::SecondaryLabel)));
    }
}

} // namespace rb
