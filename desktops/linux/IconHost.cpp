#include "desktops/linux/IconHost.h"

#include "desktops/linux/BusSignal.h"
#include "desktops/linux/NotifierHost.h"
#include "desktops/linux/TrayHost.h"
#include "desktops/linux/TrayWatch.h"

#include <QObject>
#include <QTimer>

namespace rb {

class IconHost::Beginning final : public QObject {};

IconHost::IconHost(MenuBar& bar, XConnection& connection, TrayWatch& watch, const Pictures& pictures,
                   const LinuxAppearance& appearance)
    : beginning_(std::make_unique<Beginning>())
    , tray_(std::make_unique<TrayHost>(bar, connection, appearance)) {
    QTimer::singleShot(0, beginning_.get(), [this, &bar, &watch, &pictures, &appearance] {
        watch.setOwnTray(tray_->window());
        tray_->begin();
        if (hasSessionBus()) {
            notifiers_ = std::make_unique<NotifierHost>(bar, pictures, appearance,
                                                        [&watch](const QString& name) { watch.setOwnWatcher(name); });
        }
    });
}

IconHost::~IconHost() = default;

void IconHost::themeChanged() {
    tray_->themeChanged();
}

} // namespace rb
