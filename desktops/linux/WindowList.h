#pragma once

#include "desktops/linux/XConnection.h"
#include "platform/WindowList.h"

namespace rb {

// The children of the root window, by the types that they declare: menus and what drops down from them are on the
// layer of menus, docks on that of the menu bar, everything else on the usual one.
class LinuxWindowList final : public WindowList {
public:
    explicit LinuxWindowList(XConnection& connection)
        : connection_(connection) {}

    std::optional<std::vector<int>> layersOnScreen() const override;

private:
    XConnection& connection_;
};

} // namespace rb
