#include "displays/Standby.h"

#include <algorithm>

namespace rb {

std::string channelOf(const DisplayRow& row, const HelperAnswer& list) {
    if (row.builtin || !list.list) {
        return {};
    }
    const auto found = std::find_if(list.list->begin(), list.list->end(),
                                    [&row](const HelperAnswer::ListEntry& entry) { return entry.id == row.id; });
    return found != list.list->end() ? found->uuid : std::string();
}

std::optional<std::string> statusWithoutProbe(const DisplayRow& row, bool hasHelper, const std::string& channel) {
    if (row.builtin) {
        return "内置屏幕不支持此单屏 DDC 待机方式。";
    }
    if (!hasHelper) {
        return "Intel Mac 暂不支持单屏硬件控制，全部熄屏仍可使用。";
    }
    if (channel.empty()) {
        return "未识别到硬件控制通道；可能是虚拟屏幕或连接不支持。";
    }
    return std::nullopt;
}

void applyProbe(DisplayRow& row, const std::string& channel, const HelperAnswer& probe,
                const ConnectionSnapshot& snapshot, const std::vector<DisplayRow>& oldRows) {
    row.uuid = channel;
    row.supported = probe.ok;
    row.status = probe.ok ? std::optional<std::string>("单屏待机可用") : probe.message;
    if (!probe.ok) {
        for (const Port& port : snapshot.ports) {
            for (const DisplayLink& link : port.displays) {
                if (link.monitorName == row.name && link.branchDevice) {
                    row.status = "已识别显示器，经 " + *link.branchDevice +
                                 " 转接；当前连接未返回有效 DDC 响应，单屏待机不可用。";
                }
            }
        }
    }
    row.sleepRequested = row.sleepRequested || std::any_of(oldRows.begin(), oldRows.end(), [&](const DisplayRow& old) {
                             return old.sleepRequested && old.uuid == channel;
                         });
}

void carryOverUnreachable(std::vector<DisplayRow>& rows, const std::vector<DisplayRow>& oldRows) {
    for (const DisplayRow& old : oldRows) {
        const bool known =
            std::any_of(rows.begin(), rows.end(), [&old](const DisplayRow& row) { return row.uuid == old.uuid; });
        if (old.sleepRequested && !old.uuid.empty() && !known) {
            DisplayRow gone = old;
            gone.online = false;
            gone.status = "待机后屏幕已不可达；可以尝试唤醒，失败时请按显示器电源键。";
            rows.push_back(std::move(gone));
        }
    }
}

void applyCommand(DisplayRow& row, const std::string& command, const HelperAnswer& answer) {
    row.status = answer.message;
    if (!answer.ok) {
        return;
    }
    if (command == "sleep") {
        row.sleepRequested = true;
    } else if (answer.verified) {
        row.sleepRequested = false;
    }
}

} // namespace rb
