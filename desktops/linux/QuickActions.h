#pragma once

#include "platform/QuickActions.h"

#include <string>

namespace rb {

class Log;

// The action in the menus of the file managers that are installed, each in its own way, for this user alone. A file
// of somebody else's under our name is left alone, and said so in the log.
class LinuxQuickActions final : public QuickActions {
public:
    explicit LinuxQuickActions(Log& log)
        : log_(log) {}

    std::vector<std::unique_ptr<QuickAction>> textActions() override;
    std::vector<std::unique_ptr<QuickAction>> installedTextActions() override;
    // Nothing to do: file managers watch their folders, or look when they start.
    void refresh() override {}

private:
    enum class Wanted { ForPresentPrograms, Installed };
    std::vector<std::unique_ptr<QuickAction>> actions(Wanted wanted);

    Log& log_;
};

} // namespace rb
