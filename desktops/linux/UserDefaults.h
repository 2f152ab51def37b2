#pragma once

#include "desktops/linux/DefaultsFile.h"
#include "platform/Handle.h"
#include "platform/UserDefaults.h"

#include <map>
#include <optional>
#include <string>

namespace rb {

class Log;
class RunLoop;

// The user defaults in a file under the XDG config folder. Changes of one turn of the event loop are written together
// at its end.
class LinuxUserDefaults final : public UserDefaults {
public:
    // `folder` is the program's own folder below the XDG config folder; it is made when something is stored.
    LinuxUserDefaults(const std::string& folder, RunLoop& runLoop, Log& log);
    ~LinuxUserDefaults() override;

    std::optional<PropertyValue> objectForKey(const std::string& key) const override;
    void setObject(const std::string& key, PropertyValue value) override;
    void removeObject(const std::string& key) override;
    void registerDefaults(const PropertyDictionary& defaults) override;

    // Writes at once what hasn't been written yet; true when all of it is on the disk then.
    bool synchronize();

private:
    void change(const std::string& key, std::optional<PropertyValue> value);

    RunLoop& runLoop_;
    DefaultsFile file_;
    PropertyDictionary values_;
    PropertyDictionary registered_;
    // Keys changed since the last writing; nothing means removed.
    DefaultsFile::Changes changes_;
    bool writing_ = false;
    Lifetime lifetime_;
};

} // namespace rb
