#pragma once

#include "helpers/capture/Arguments.h"
#include "helpers/capture/Saver.h"
#include "helpers/capture/Settings.h"

#include <optional>
#include <string>

namespace rb {

// Where a capture goes.
struct CaptureDestination {
    bool toClipboard = false;
    bool toFile = true;
    std::string folder = {};
    std::string name = {};         // without the extension; empty for one after the time
    std::string type = "png";      // the picture's format, by its usual extension
    std::string extension = "png"; // as the user writes it
    // Where it goes when the folder takes nothing; empty for nowhere.
    std::string fallback = {};
    std::string error = {}; // for the user; then nothing else counts
};

// The user's folders, absolute.
struct CapturePlaces {
    std::string home;
    std::string desktop;
    std::string working;
};

// A type of the settings that can't be written becomes "png".
CaptureDestination captureDestination(const CaptureArguments& arguments, const CaptureSettings& settings,
                                      const CapturePlaces& places);

} // namespace rb
