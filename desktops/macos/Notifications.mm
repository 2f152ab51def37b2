#include "desktops/macos/Notifications.h"

#include <memory>
#include <utility>

namespace rb {

Handle observeNotification(NSNotificationName name, std::function<void()> posted) {
    const auto shared = std::make_shared<const std::function<void()>>(std::move(posted));
    id token = [NSNotificationCenter.defaultCenter addObserverForName:name
                                                               object:nil
                                                                queue:nil
                                                           usingBlock:^(NSNotification*) {
                                                               // It may drop its handle, and with it this block.
                                                               const auto kept = shared;
                                                               (*kept)();
                                                           }];
    return Handle([token] { [NSNotificationCenter.defaultCenter removeObserver:token]; });
}

} // namespace rb
