#pragma once

#include "helpers/capture/Arguments.h"

namespace rb {

// One capture from the arguments to the file or the clipboard. The process ends with what it returns.
int runCapture(const CaptureArguments& arguments);

} // namespace rb
