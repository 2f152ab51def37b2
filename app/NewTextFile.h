#pragma once

#include "platform/Desktop.h"
#include "platform/FrontFolder.h"
#include "platform/Handle.h"
#include "platform/SavePanels.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace rb {

// The command that makes an empty text file where the user is looking, through a save panel that proposes a free
// name, and opens it. An existing file is never replaced. Also keeps the file manager's action for it installed.
// Main thread only.
class NewTextFile {
public:
    explicit NewTextFile(const Desktop& desktop)
        : desktop_(desktop) {}

    // In the front folder of the file manager. While the panel is open this only brings it forward.
    void newTextFile();
    // In a folder that is already known; one that isn't there counts as one that couldn't be told.
    void newTextFileIn(const std::string& folder);

    // Installs the action wherever it is missing or of another version. Failures are logged.
    void installTextQuickAction();
    void removeTextQuickAction();

private:
    using FolderAnswer = std::function<void(const FrontFolder::Answer&)>;

    // The folder of the front window; without one the answer always says why.
    void currentFinderFolder(FolderAnswer answer);
    void showAutomationPermissionAlert();
    std::string fallbackFolder() const;
    void showPanel(const std::string& folder);
    std::string proposedName(const std::string& folder) const;
    // Whether a file or a link, even a dangling one, has the path already.
    bool isTaken(const std::string& path) const;
    std::optional<std::string> validate(const std::string& path) const;
    void panelFinished(const std::optional<std::string>& path);
    void openCreatedTextFile(const std::string& path);

    const Desktop& desktop_;
    std::unique_ptr<SavePanel> textSavePanel_; // null while none is open
    // The file manager is being asked; its answer counts only with this number.
    int question_ = 0;
    bool asking_ = false;
    Lifetime lifetime_;
};

} // namespace rb
