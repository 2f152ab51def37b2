#pragma once

#include "platform/Panels.h"

namespace rb {

// Borderless non-activating NSPanels.
class MacPanels final : public Panels {
public:
    std::unique_ptr<Panel> createPanel(const PanelSpec& spec) override;
};

} // namespace rb
