#pragma once

#include <string>

namespace rb {

// Carries out one trial: sets the mode, says so on standard output, waits for "keep" on standard input and else takes
// the mode back. The exit code of the program.
int runTrial(const std::string& identity, const std::string& modeID);

// Takes back what a record of an earlier trial says, where one was left behind.
int restoreFromRecords();

} // namespace rb
