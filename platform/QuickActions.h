#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// One place where the file manager's "new text file" action can be installed for the user, and what is there now.
// Only the program's own files are ever changed. Failures are words for the log.
class QuickAction {
public:
    virtual ~QuickAction() = default;
    // Of the copy that the program brings.
    virtual std::optional<std::string> bundledVersion() const = 0;
    // Of the copy that is installed; nothing also for a copy that doesn't say.
    virtual std::optional<std::string> installedVersion() const = 0;
    virtual bool isInstalled() const = 0;
    // Nothing on success.
    virtual std::optional<std::string> remove() = 0;
    // Makes the folders on the way. Something in its place is an error. Nothing on success.
    virtual std::optional<std::string> install() = 0;
};

// The file manager's actions. Main thread only.
class QuickActions {
public:
    virtual ~QuickActions() = default;
    // Where this user can have it: none when the program brings no action or no file manager could show it.
    virtual std::vector<std::unique_ptr<QuickAction>> textActions() = 0;
    // Where there is an installed copy, also of file managers that are gone.
    virtual std::vector<std::unique_ptr<QuickAction>> installedTextActions() = 0;
    // Tells the system to look at its actions again.
    virtual void refresh() = 0;
};

} // namespace rb
