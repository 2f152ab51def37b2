#pragma once

#include <optional>
#include <string>
#include <vector>

namespace rb {

// Answers --help and --version; the exit code, or nothing when neither was asked for.
std::optional<int> answerUsage(const std::string& program, const std::vector<std::string>& arguments,
                               const std::string& help);
// Says on standard error that the arguments make no sense; the exit code.
int refuseUsage(const std::string& program);

} // namespace rb
