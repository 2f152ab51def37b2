#include "desktops/linux/NotifierHost.h"

#include "desktops/linux/NotifierIcon.h"

#include <algorithm>
#include <utility>

namespace rb {

NotifierHost::NotifierHost(MenuBar& bar, const Pictures& pictures, const LinuxAppearance& appearance,
                           std::function<void(const QString& connection)> begins)
    : watcher_({.begins = std::move(begins),
                .registered =
                    [this, &bar, &pictures, &appearance](const NotifierAddress& item) {
                        icons_.push_back(std::make_unique<NotifierIcon>(item, bar, pictures, appearance));
                    },
                .gone = [this](const NotifierAddress& item) { remove(item); }}) {}

NotifierHost::~NotifierHost() = default;

void NotifierHost::remove(const NotifierAddress& item) {
    std::erase_if(icons_, [&](const auto& icon) { return icon->address() == item; });
}

} // namespace rb
