#pragma once

#include "platform/Screenshots.h"

namespace rb {

class Log;

// The domain com.apple.screencapture through Core Foundation's preferences. All screenshot programs of the system go
// by it, so there are no others to take over.
class MacScreenshotPreferences final : public ScreenshotPreferences {
public:
    explicit MacScreenshotPreferences(Log& log)
        : log_(log) {}

    void synchronize() override;
    std::optional<PropertyValue> value(const std::string& key) const override;
    void setValue(const std::string& key, std::optional<PropertyValue> value) override;
    std::string ownFolder() const override;
    bool makeOwnFolder() override;
    void redirectPrograms(const std::string& /*folder*/) override {}
    void restorePrograms() override {}

private:
    Log& log_;
};

} // namespace rb
