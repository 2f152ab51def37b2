#include "desktops/linux/StatusBar.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/MenuBar.h"
#include "desktops/linux/MenuBarItem.h"
#include "desktops/linux/NotifierItem.h"
#include "desktops/linux/Screens.h"
#include "desktops/linux/TrayIcon.h"
#include "platform/RunLoop.h"

#include <QtGlobal>

#include <utility>

namespace rb {

namespace {

// A desktop's own panel may come up, or come back after a crash, a moment later than we ask for it. Meanwhile our
// own bar would only flash up.
constexpr double patienceForPanels = 2;

bool sessionHasDesktop() {
    return !qEnvironmentVariableIsEmpty("XDG_CURRENT_DESKTOP");
}

} // namespace

LinuxStatusItem::LinuxStatusItem(LinuxStatusBar& bar)
    : bar_(bar) {}

LinuxStatusItem::~LinuxStatusItem() {
    bar_.remove(*this);
}

void LinuxStatusItem::setImage(const Image& image) {
    image_ = image;
    if (presenter_) {
        presenter_->imageChanged();
    }
}

void LinuxStatusItem::setToolTip(const std::string& toolTip) {
    toolTip_ = toolTip;
    if (presenter_) {
        presenter_->toolTipChanged();
    }
}

void LinuxStatusItem::setMenu(std::shared_ptr<Menu> menu) {
    menu_ = std::move(menu);
    if (presenter_) {
        presenter_->menuChanged();
    }
}

LinuxStatusBar::LinuxStatusBar(XConnection& connection, RunLoop& loop, LinuxScreens& screens, Symbols& symbols,
                               LinuxAppearance& appearance)
    : connection_(connection)
    , loop_(loop)
    , screens_(screens)
    , pictures_(symbols)
    , appearance_(appearance)
    , watch_(connection, [this] { decide(); })
    , patient_(sessionHasDesktop())
    , appearanceChanges_(appearance.onChange([this] {
        for (LinuxStatusItem* item : items_) {
            if (item->presenter()) {
                item->presenter()->imageChanged();
            }
        }
        if (ownBar_) {
            ownBar_->update();
        }
    })) {
    decide();
}

LinuxStatusBar::~LinuxStatusBar() {
    for (LinuxStatusItem* item : items_) {
        item->setPresenter(nullptr);
    }
}

std::unique_ptr<StatusItem> LinuxStatusBar::createItem() {
    auto item = std::make_unique<LinuxStatusItem>(*this);
    items_.push_back(item.get());
    item->setPresenter(present(*item));
    return item;
}

void LinuxStatusBar::remove(LinuxStatusItem& item) {
    item.setPresenter(nullptr);
    std::erase(items_, &item);
}

double LinuxStatusBar::thickness() const {
    return MenuBar::thickness;
}

void LinuxStatusBar::decide() {
    if (!watch_.hasNotifierHost()) {
        return; // the bus answers within moments
    }
    if (*watch_.hasNotifierHost()) {
        moveTo(Place::Notifier);
    } else if (watch_.trayOwner() != XCB_WINDOW_NONE) {
        moveTo(Place::Tray);
    } else if (place_ == Place::OwnBar || !patient_) {
        moveTo(Place::OwnBar);
    } else if (!patience_) {
        patience_ = loop_.after(patienceForPanels, [this] {
            patient_ = false;
            decide();
        });
    }
}

void LinuxStatusBar::moveTo(Place place) {
    patience_.reset();
    // Whoever shows the items now is waited for when it goes.
    patient_ = place != Place::OwnBar;
    const bool again = place == Place::Tray; // another tray's window is another place
    if (place == place_ && !again) {
        return;
    }
    for (LinuxStatusItem* item : items_) {
        item->setPresenter(nullptr);
    }
    place_ = place;
    if (place_ == Place::OwnBar) {
        ownBar_ = std::make_unique<MenuBar>(connection_, appearance_);
        screens_.setOwnMenuBarHeight(MenuBar::thickness);
    } else if (ownBar_) {
        ownBar_.reset();
        screens_.setOwnMenuBarHeight(0);
    }
    for (LinuxStatusItem* item : items_) {
        item->setPresenter(present(*item));
    }
}

std::unique_ptr<StatusItemPresenter> LinuxStatusBar::present(LinuxStatusItem& item) {
    switch (place_) {
    case Place::Undecided:
        return nullptr;
    case Place::Notifier:
        return std::make_unique<NotifierItem>(item, ++created_, pictures_, appearance_);
    case Place::Tray:
        return std::make_unique<TrayIcon>(item, connection_, watch_.trayOwner(), pictures_, appearance_);
    case Place::OwnBar:
        return std::make_unique<MenuBarItem>(item, *ownBar_, pictures_, appearance_);
    }
    return nullptr;
}

} // namespace rb
