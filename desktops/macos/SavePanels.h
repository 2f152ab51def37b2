#pragma once

#include "platform/SavePanels.h"

namespace rb {

// NSSavePanel, not modal, with a delegate that passes the product's refusals on.
class MacSavePanels final : public SavePanels {
public:
    std::unique_ptr<SavePanel> begin(const SavePanelSpec& spec, Validate validate, Answer answer) override;
};

} // namespace rb
