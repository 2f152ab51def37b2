#pragma once

#include "platform/StatusBar.h"

namespace rb {

// NSStatusBar.
class MacStatusBar final : public StatusBar {
public:
    std::unique_ptr<StatusItem> createItem() override;
    double thickness() const override;
};

} // namespace rb
