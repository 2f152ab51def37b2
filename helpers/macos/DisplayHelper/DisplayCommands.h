#pragma once

#include <string>
#include <vector>

namespace rb {

// The answer to "list", or to "probe", "sleep" or "wake" with a channel: one line of JSON. Empty when the arguments
// make no sense. May take seconds.
std::string answerDisplayCommand(const std::vector<std::string>& arguments);

} // namespace rb
