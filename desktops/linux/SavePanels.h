#pragma once

#include "platform/SavePanels.h"

namespace rb {

class LinuxWindows;

// Save panels as dialogs beside the program's other windows.
class LinuxSavePanels final : public SavePanels {
public:
    // Outlives it.
    explicit LinuxSavePanels(LinuxWindows& windows)
        : windows_(windows) {}

    std::unique_ptr<SavePanel> begin(const SavePanelSpec& spec, Validate validate, Answer answer) override;

private:
    LinuxWindows& windows_;
};

} // namespace rb
