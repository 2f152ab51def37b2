#pragma once

#include <string>

namespace rb {

// Tries a display mode. It is set for this process alone, so the window server takes it back by itself however the
// process ends; only the line "keep" on `input`, a descriptor, sets it for good. Says on standard output what happens;
// the exit code.
int runTrial(const std::string& identity, const std::string& modeID, int input);

} // namespace rb
