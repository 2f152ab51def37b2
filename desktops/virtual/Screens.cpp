#include "desktops/virtual/Screens.h"

#include <algorithm>
#include <utility>

namespace rb {

VirtualScreens::VirtualScreens()
    : screens_({{.id = 1,
                 .frame = {0, 0, 1440, 900},
                 .visibleFrame = {0, 0, 1440, 876},
                 .backingScaleFactor = 2,
                 .localizedName = "Built-in"}}) {}

std::optional<Screen> VirtualScreens::main() const {
    const auto found =
        std::find_if(screens_.begin(), screens_.end(), [this](const Screen& screen) { return screen.id == main_; });
    if (found != screens_.end()) {
        return *found;
    }
    return screens_.empty() ? std::nullopt : std::optional(screens_.front());
}

void VirtualScreens::set(std::vector<Screen> screens) {
    screens_ = std::move(screens);
    main_.reset();
    observers_.notify();
}

} // namespace rb
