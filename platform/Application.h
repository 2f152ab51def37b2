#pragma once

#include "platform/PreviewPanel.h"

#include <optional>
#include <string>
#include <vector>

namespace rb {

// What the system tells the program's spine. All on the main thread.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching() = 0;
    // The user opened the program again while it runs. True lets the system do its usual thing too.
    virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
    // The user asked to open these files with the program; absolute paths.
    virtual void applicationOpenFiles(const std::vector<std::string>& paths) = 0;
    // The user asked for a new text file from outside: in that folder (absolute), or where they are looking.
    virtual void applicationNewTextFile(const std::optional<std::string>& folder) = 0;
    // Last call before the process ends in order, also on a termination signal.
    virtual void applicationWillTerminate() = 0;
    virtual bool acceptsPreviewPanelControl() = 0;
    virtual void beginPreviewPanelControl(PreviewPanel& panel) = 0;
    virtual void endPreviewPanelControl(PreviewPanel& panel) = 0;
};

enum class ActivationPolicy { Regular, Accessory };

// The running program. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    // Runs the event loop until terminate(); the delegate outlives it. Returns the exit code.
    virtual int run(ApplicationDelegate& delegate) = 0;
    // Tells the delegate and ends the loop.
    virtual void terminate() = 0;
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
    // Brings the program to the front, whichever is there now.
    virtual void activateIgnoringOtherApps() = 0;
    // Without the program's own name.
    virtual std::vector<std::string> arguments() const = 0;
    // A text of the program's information dictionary (SUFeedURL …); nothing when absent or not a text.
    virtual std::optional<std::string> infoString(const std::string& key) const = 0;
};

} // namespace rb
