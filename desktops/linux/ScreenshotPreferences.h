#pragma once

#include "desktops/linux/DefaultsFile.h"
#include "desktops/linux/ProgramTakeover.h"
#include "platform/Log.h"
#include "platform/Screenshots.h"

#include <map>
#include <optional>
#include <string>

namespace rb {

class LinuxUserDefaults;

// The screenshot settings in a file of ours, screencapture.json beside the user defaults. rookbay-capture goes by it;
// unknown keys stay in it.
class LinuxScreenshotPreferences final : public ScreenshotPreferences {
public:
    LinuxScreenshotPreferences(LinuxUserDefaults& defaults, Log& log);

    void synchronize() override;
    std::optional<PropertyValue> value(const std::string& key) const override;
    void setValue(const std::string& key, std::optional<PropertyValue> value) override;
    std::string ownFolder() const override;
    bool makeOwnFolder() override;
    void redirectPrograms(const std::string& folder) override { takeover_.redirect(folder); }
    void restorePrograms() override { takeover_.restore(); }

private:
    // The settings are read every two seconds; the same complaint is told once.
    class ToldOnce final : public Log {
    public:
        explicit ToldOnce(Log& log)
            : log_(log) {}
        void write(const std::string& line) override {
            if (line != last_) {
                last_ = line;
                log_.write(line);
            }
        }

    private:
        Log& log_;
        std::string last_;
    };

    LinuxUserDefaults& defaults_;
    ToldOnce log_;
    ProgramTakeover takeover_;
    PropertyDictionary values_;
    DefaultsFile::Changes changes_;
};

} // namespace rb
