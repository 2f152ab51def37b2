#pragma once

#include "platform/FrontFolder.h"

namespace rb {

// Asks Finder by an AppleScript that runs in this process. The first time macOS asks the user for permission; the
// answer comes before ask() returns.
class MacFrontFolder final : public FrontFolder {
public:
    void ask(std::function<void(const Answer&)> answer) override;
};

} // namespace rb
