#pragma once

#include "platform/Files.h"
#include "platform/PropertyList.h"
#include "platform/Screenshots.h"
#include "platform/UserDefaults.h"

#include <array>
#include <optional>
#include <string>

namespace rb {

// The takeover of the system's screenshot settings: captures go straight into a folder of ours and without the
// floating thumbnail. The user's own values wait in the user defaults meanwhile. It has no state of its own.
class RBInbox {
public:
    RBInbox(ScreenshotPreferences& preferences, UserDefaults& defaults, const Files& files)
        : preferences_(preferences)
        , defaults_(defaults)
        , files_(files) {}

    // The keys that are taken over.
    static const std::array<std::string, 5>& keys();
    // Where captures go meanwhile; an absolute path.
    std::string folder() const { return preferences_.ownFolder(); }
    // The file lies in that folder. The folder isn't inside itself.
    bool contains(const std::string& path) const;
    // The settings send captures into our folder now.
    bool isApplied() const;
    void apply();
    // Makes our folder anew when somebody took it away while captures go there.
    void keepFolder();
    // Puts the user's values back; keys that the user never had go. Nothing when somebody else has changed the
    // location meanwhile.
    void restore();

private:
    bool leadsIntoFolder(const std::string& key) const;
    PropertyDictionary usersValues() const;

    ScreenshotPreferences& preferences_;
    UserDefaults& defaults_;
    const Files& files_;
};

} // namespace rb
