#pragma once

#include "platform/WindowList.h"

#include <utility>

namespace rb {

// The windows that the test says there are.
class VirtualWindowList final : public WindowList {
public:
    std::optional<std::vector<int>> layersOnScreen() const override { return layers_; }
    // Nothing: the list can't be read.
    void setLayers(std::optional<std::vector<int>> layers) { layers_ = std::move(layers); }

private:
    std::optional<std::vector<int>> layers_ = std::vector<int>{0, 0, 25};
};

} // namespace rb
