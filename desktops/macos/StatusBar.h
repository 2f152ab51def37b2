#pragma once

#include "platform/StatusBar.h"

namespace rb {

// NSStatusBar.
class MacStatusBar final : public StatusBar {
public:
    std::unique_ptr<StatusItem> createItem() override;
    double thickness() const override;
    // The system's bar: always there, and always pushing out what finds no room.
    bool longItemsPushOthersOut() const override { return true; }
    Handle onBarChange(std::function<void()> /*changed*/) override { return {}; }
};

} // namespace rb
