#pragma once

#include "desktops/linux/NotifierWatcher.h"

#include <functional>
#include <memory>
#include <vector>

namespace rb {

class LinuxAppearance;
class MenuBar;
class NotifierIcon;
class Pictures;

// The StatusNotifierItems of other programs in our own menu bar. Main thread only.
class NotifierHost {
public:
    // All of them outlive it. `begins` is told the unique bus name of our watcher before it takes the well-known one.
    NotifierHost(MenuBar& bar, const Pictures& pictures, const LinuxAppearance& appearance,
                 std::function<void(const QString& connection)> begins);
    ~NotifierHost();
    NotifierHost(const NotifierHost&) = delete;
    NotifierHost& operator=(const NotifierHost&) = delete;

private:
    void remove(const NotifierAddress& item);

    std::vector<std::unique_ptr<NotifierIcon>> icons_;
    NotifierWatcher watcher_; // goes first
};

} // namespace rb
