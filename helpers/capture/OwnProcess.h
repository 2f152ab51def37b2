#pragma once

#include <string>
#include <vector>

namespace rb {

// Starts this program again with these arguments, in a session of its own: it outlives us and the terminal that we
// were started from. `input` and `output` become its standard input and output, -1 is nothing. False when it can't be
// started.
[[nodiscard]] bool startAgain(const std::vector<std::string>& arguments, int input = -1, int output = -1);

} // namespace rb
