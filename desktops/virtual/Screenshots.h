#pragma once

#include "platform/Screenshots.h"

#include <map>
#include <optional>
#include <set>
#include <string>

namespace rb {

class VirtualFiles;
class VirtualRunLoop;

// The system's screenshot settings in memory. What is set counts once it is synchronized.
class VirtualScreenshotPreferences final : public ScreenshotPreferences {
public:
    VirtualScreenshotPreferences(const VirtualRunLoop& loop, VirtualFiles& files)
        : loop_(loop)
        , files_(files) {}

    void synchronize() override;
    std::optional<PropertyValue> value(const std::string& key) const override;
    void setValue(const std::string& key, std::optional<PropertyValue> value) override;
    std::string ownFolder() const override { return "/Users/rb/Library/Application Support/Rook Bay/Screenshots"; }
    bool makeOwnFolder() override;
    void redirectPrograms(const std::string& folder) override { programsFolder_ = folder; }
    void restorePrograms() override { programsFolder_.reset(); }

    // What the system goes by.
    const PropertyDictionary& stored() const { return stored_; }
    // Somebody else writes.
    void store(const std::string& key, PropertyValue value) { stored_.insert_or_assign(key, std::move(value)); }
    int commits() const { return commits_; }
    void remove(const std::string& key) { stored_.erase(key); }
    // As a full disk does.
    void refuseStoring(bool refuse) { refusesStoring_ = refuse; }
    void refuseFolder() { refusesFolder_ = true; }
    const std::optional<std::string>& programsFolder() const { return programsFolder_; }

private:
    const VirtualRunLoop& loop_;
    VirtualFiles& files_;
    PropertyDictionary stored_;
    PropertyDictionary seen_; // what our side reads: as of the last synchronizing, with our changes
    std::map<std::string, std::optional<PropertyValue>> changes_;
    std::optional<std::string> programsFolder_;
    int commits_ = 0;
    bool refusesFolder_ = false;
    bool refusesStoring_ = false;
};

// Marks and rectangles as a test attaches them to paths.
class VirtualCaptureFacts final : public CaptureFacts {
public:
    bool isMarkedAsCapture(const std::string& path) const override { return marked_.contains(path); }
    std::optional<PropertyValue> captureRectangle(const std::string& path) const override {
        const auto found = rectangles_.find(path);
        return found == rectangles_.end() ? std::nullopt : std::optional(found->second);
    }

    void mark(const std::string& path) { marked_.insert(path); }
    void setRectangle(const std::string& path, PropertyValue rectangle) {
        rectangles_.insert_or_assign(path, std::move(rectangle));
    }

private:
    std::set<std::string> marked_;
    std::map<std::string, PropertyValue> rectangles_;
};

} // namespace rb
