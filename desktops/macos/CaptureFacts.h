#pragma once

#include "platform/Screenshots.h"

namespace rb {

// The extended attributes that the system gives its captures.
class MacCaptureFacts final : public CaptureFacts {
public:
    bool isMarkedAsCapture(const std::string& path) const override;
    std::optional<PropertyValue> captureRectangle(const std::string& path) const override;
};

} // namespace rb
