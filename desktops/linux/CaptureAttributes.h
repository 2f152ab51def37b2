#pragma once

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

} // namespace rb
