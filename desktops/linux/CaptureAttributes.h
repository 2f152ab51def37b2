#pragma once

#include "motion/Geometry.h"
#include "platform/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

namespace rb {

// Extended attributes of captures, as macOS names them below the namespace that users may write.
inline constexpr const char* captureMarkAttribute = "user.com.apple.metadata:kMDItemIsScreenCapture";
inline constexpr const char* captureRectAttribute = "user.com.apple.metadata:kMDItemScreenCaptureGlobalRect";

// The array of numbers in a property list of any format; other elements become empty texts, so that the count stays.
// Nothing for anything but an array, and for what is no property list. Any thread.
std::optional<PropertyArray> numbersOfPropertyList(std::string_view bytes);

// The attribute's bytes; nothing when it is absent, unreadable or longer than any of ours.
std::optional<std::string> readAttribute(const std::string& path, const char* name);

// What the attributes of a capture hold, as binary property lists: true, and the array of x, y, width and height. The
// rectangle is in points from the top left of the primary screen, y growing downwards.
std::string captureMark();
std::string captureRectangle(const Rect& rect);

// Sets an attribute of an open file; false where the file system keeps none, or has no room.
[[nodiscard]] bool writeAttribute(int file, const char* name, const std::string& bytes);

} // namespace rb
