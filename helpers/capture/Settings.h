#pragma once

#include "platform/PropertyList.h"

#include <functional>
#include <string>
#include <vector>

namespace rb {

// What the system's screenshot settings say about a capture.
struct CaptureSettings {
    std::vector<std::string> locations = {}; // folders as they were named, the first one that exists counts
    bool toClipboard = false;
    bool thumbnail = true;
    std::string type = "png"; // a file extension
};

// Values of an unexpected kind count as absent. A pure function.
CaptureSettings readCaptureSettings(const PropertyDictionary& preferences);

// The settings of this user from screencapture.json. The file is only read; where it can't be, the reason goes to
// `complain` and the standard settings hold.
CaptureSettings loadCaptureSettings(const std::function<void(const std::string&)>& complain);

// The folder in which captures go that name none: the first location that is a folder, else `desktop`.
std::string captureFolder(const CaptureSettings& settings, const std::string& home, const std::string& desktop);

} // namespace rb
