#pragma once

#include "platform/WindowList.h"

namespace rb {

// The window server's list.
class MacWindowList final : public WindowList {
public:
    std::optional<std::vector<int>> layersOnScreen() const override;
};

} // namespace rb
