#pragma once

#include "platform/Desktop.h"

namespace rb {

// Runs the program on a desktop until it quits; the desktop outlives it. Returns the exit code.
int runRookBay(const Desktop& desktop);

} // namespace rb
