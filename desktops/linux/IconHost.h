#pragma once

#include <memory>

namespace rb {

class LinuxAppearance;
class MenuBar;
class NotifierHost;
class Pictures;
class TrayHost;
class TrayWatch;
class XConnection;

// The icons of other programs in our own menu bar, of both kinds that there are. Begins in a later turn of the event
// loop, so that our own items come first; never takes a role that somebody else has. Ends with this: the icons leave
// the bar alive and look for another one. Main thread only.
class IconHost {
public:
    // All of them outlive it.
    IconHost(MenuBar& bar, XConnection& connection, TrayWatch& watch, const Pictures& pictures,
             const LinuxAppearance& appearance);
    ~IconHost();
    IconHost(const IconHost&) = delete;
    IconHost& operator=(const IconHost&) = delete;

    void themeChanged();

private:
    class Beginning;

    std::unique_ptr<Beginning> beginning_;
    std::unique_ptr<TrayHost> tray_;
    std::unique_ptr<NotifierHost> notifiers_;
};

} // namespace rb
