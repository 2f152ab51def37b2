#pragma once

#include "displays/ConnectionSnapshot.h"
#include "displays/HelperAnswer.h"

#include <optional>
#include <string>
#include <vector>

// How the standby of single displays is worded and remembered. Pure functions.
namespace rb {

// The control channel that the list gives the row; empty for none, for a built-in display and for an answer that is no
// list.
std::string channelOf(const DisplayRow& row, const HelperAnswer& list);

// The row's status before or without a probe: built in, no helper, no channel; nothing when it is to be probed.
std::optional<std::string> statusWithoutProbe(const DisplayRow& row, bool hasHelper, const std::string& channel);

// Fills a row from the probe of its channel, the snapshot and the rows of the pass before.
void applyProbe(DisplayRow& row, const std::string& channel, const HelperAnswer& probe,
                const ConnectionSnapshot& snapshot, const std::vector<DisplayRow>& oldRows);

// Adds displays that were put to standby and are no longer there.
void carryOverUnreachable(std::vector<DisplayRow>& rows, const std::vector<DisplayRow>& oldRows);

// Takes the outcome of "sleep" or "wake" over.
void applyCommand(DisplayRow& row, const std::string& command, const HelperAnswer& answer);

inline constexpr const char* sendingCommandStatus = "正在发送电源命令…";

} // namespace rb
