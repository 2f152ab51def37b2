#pragma once

#include "platform/Screenshots.h"

namespace rb {

class XConnection;

// Where a capture was taken: from the file's attribute, or, for programs that write none, by finding the picture on
// the screen.
class LinuxCaptureFacts final : public CaptureFacts {
public:
    explicit LinuxCaptureFacts(XConnection& connection)
        : connection_(connection) {}

    bool isMarkedAsCapture(const std::string& path) const override;
    std::optional<PropertyValue> captureRectangle(const std::string& path) const override;

private:
    XConnection& connection_;
    mutable double searched_ = 0; // seconds of searching that count against the next one
    mutable double lastSearch_ = 0;
};

} // namespace rb
