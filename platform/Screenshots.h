#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>

namespace rb {

// The system's own screenshot settings. Main thread only.
class ScreenshotPreferences {
public:
    virtual ~ScreenshotPreferences() = default;

    // Stores what was set since the last time, all of it or nothing, and reads what others stored meanwhile. What the
    // user defaults hold is on disk before anything of this is.
    virtual void synchronize() = 0;
    virtual std::optional<PropertyValue> value(const std::string& key) const = 0;
    // Nothing removes the key.
    virtual void setValue(const std::string& key, std::optional<PropertyValue> value) = 0;

    // Where captures go that exist only for the line; an absolute path that needn't exist.
    virtual std::string ownFolder() const = 0;
    // Makes it with what is missing above it; false when that fails.
    virtual bool makeOwnFolder() = 0;

    // Screenshot programs that keep a save folder of their own follow into the folder, and go back to exactly what
    // they had; what somebody changed meanwhile stays. A system with one set of settings for all has none of them.
    virtual void redirectPrograms(const std::string& folder) = 0;
    virtual void restorePrograms() = 0;
};

// What the system knows of a capture that it wrote. Main thread only.
class CaptureFacts {
public:
    virtual ~CaptureFacts() = default;
    // The file carries the mark of a screen capture; false when that can't be read.
    virtual bool isMarkedAsCapture(const std::string& path) const = 0;
    // Where on the screens it was taken, as it was recorded and thus unchecked: should be an array of x, y, width and
    // height in points from the top left of the primary screen, y growing downwards. Nothing when nobody can tell.
    virtual std::optional<PropertyValue> captureRectangle(const std::string& path) const = 0;
};

} // namespace rb
