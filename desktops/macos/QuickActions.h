#pragma once

#include "platform/QuickActions.h"

namespace rb {

// The workflow bundle of the program's resources in the user's Services folder.
class MacQuickActions final : public QuickActions {
public:
    std::vector<std::unique_ptr<QuickAction>> textActions() override;
    std::vector<std::unique_ptr<QuickAction>> installedTextActions() override;
    void refresh() override;
};

} // namespace rb
