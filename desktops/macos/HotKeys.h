#pragma once

#include "platform/HotKeys.h"

namespace rb {

// Hot keys of the Carbon Event Manager.
class MacHotKeys final : public HotKeys {
public:
    Handle installHandler(std::function<void(HotKeyId)> pressed) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyId id) override;
};

} // namespace rb
