#include "desktops/linux/StatusBar.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/IconHost.h"
#include "desktops/linux/MenuBar.h"
#include "desktops/linux/MenuBarItem.h"
#include "desktops/linux/NotifierItem.h"
#include "desktops/linux/Popover.h"
#include "desktops/linux/ScreenSpace.h"
#include "desktops/linux/Screens.h"
#include "desktops/linux/TrayIcon.h"
#include "desktops/linux/UserDefaults.h"
#include "desktops/linux/Windows.h"
#include "platform/RunLoop.h"

#include <QtGlobal>

#include <utility>

namespace rb {

namespace {

// A desktop's own panel may come up, or come back after a crash, a moment later than we ask for it. Meanwhile our
// own bar would only flash up.
constexpr double patienceForPanels = 2;

// The user's arrangement of our own bar: names from the right end.
constexpr const char* orderKey = "LinuxMenuBarOrder";

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

void LinuxStatusItem::setLength(double length) {
    length_ = length;
    if (presenter_) {
        presenter_->lengthChanged();
    }
}

void LinuxStatusItem::setVisible(bool visible) {
    if (visible_ == visible) {
        return;
    }
    visible_ = visible;
    if (visible) {
        bar_.presentItems();
    } else {
        presenter_.reset();
    }
}

void LinuxStatusItem::popUpMenu(std::shared_ptr<Menu> menu) {
    if (presenter_) {
        presenter_->popUpMenu(std::move(menu));
    }
}

// The item's only moving part is its picture, so one transition at a time is all there can be.
void LinuxStatusItem::addTransition(const std::string& /*key*/, const PushTransition& transition) {
    if (presenter_) {
        presenter_->addTransition(transition);
    }
}

std::optional<Rect> LinuxStatusItem::frame() const {
    const auto place = presenter_ ? presenter_->areaOnScreen() : std::nullopt;
    return place ? std::optional(ScreenSpace::current().fromQt(QRectF(*place))) : std::nullopt;
}

std::unique_ptr<Popover> LinuxStatusItem::showPopover(PopoverSpec spec) {
    const auto place = presenter_ ? presenter_->areaOnScreen() : std::nullopt;
    return place ? std::make_unique<LinuxPopover>(bar_.with_.windows, bar_.with_.monitors, std::move(spec), *place)
                 : nullptr;
}

void LinuxStatusItem::clicked(const StatusItemClick& click) const {
    if (const auto action = action_) { // it may take the item away
        action(click);
    }
}

LinuxStatusBar::LinuxStatusBar(const Surroundings& surroundings)
    : with_(surroundings)
    , pictures_(surroundings.symbols)
    , order_(surroundings.defaults.stringArrayForKey(orderKey).value_or(std::vector<std::string>{}))
    , watch_(surroundings.connection, [this] { decide(); })
    , patient_(sessionHasDesktop())
    , appearanceChanges_(surroundings.appearance.onChange([this] {
        for (LinuxStatusItem* item : items_) {
            if (item->presenter()) {
                item->presenter()->imageChanged();
            }
        }
        if (ownBar_) {
            ownBar_->themeChanged();
            icons_->themeChanged();
        }
    })) {
    decide();
}

LinuxStatusBar::~LinuxStatusBar() {
    for (LinuxStatusItem* item : items_) {
        item->setPresenter(nullptr);
    }
    hideOwnBar();
}

std::unique_ptr<StatusItem> LinuxStatusBar::createItem() {
    auto item = std::make_unique<LinuxStatusItem>(*this);
    items_.push_back(item.get());
    // In a later turn, when it has its name, its picture and its length.
    with_.loop.post(lifetime_.guard([this] { presentItems(); }));
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
        patience_ = with_.loop.after(patienceForPanels, [this] {
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
    hideOwnBar();
    if (place_ == Place::OwnBar) {
        showOwnBar();
    }
    presentItems();
    barChanges_.notify();
}

void LinuxStatusBar::showOwnBar() {
    ownBar_ = std::make_unique<MenuBar>(with_.connection, with_.appearance, order_, [this] {
        PropertyArray names;
        for (const std::string& name : order_.names()) {
            names.emplace_back(name);
        }
        with_.defaults.setObject(orderKey, std::move(names));
    });
    with_.screens.setOwnMenuBarHeight(MenuBar::thickness);
    icons_ = std::make_unique<IconHost>(*ownBar_, with_.connection, watch_, pictures_, with_.appearance);
}

// First the other programs' icons leave it alive, then it goes.
void LinuxStatusBar::hideOwnBar() {
    icons_.reset();
    if (ownBar_) {
        ownBar_.reset();
        with_.screens.setOwnMenuBarHeight(0);
    }
}

void LinuxStatusBar::presentItems() {
    for (LinuxStatusItem* item : items_) {
        if (item->isVisible() && !item->presenter()) {
            item->setPresenter(present(*item));
        }
    }
}

std::unique_ptr<StatusItemPresenter> LinuxStatusBar::present(LinuxStatusItem& item) {
    switch (place_) {
    case Place::Undecided:
        return nullptr;
    case Place::Notifier:
        return std::make_unique<NotifierItem>(item, ++created_, pictures_, with_.appearance);
    case Place::Tray:
        return std::make_unique<TrayIcon>(item, with_.connection, watch_.trayOwner(), pictures_, with_.appearance);
    case Place::OwnBar:
        return std::make_unique<MenuBarItem>(item, *ownBar_, pictures_, with_.appearance);
    }
    return nullptr;
}

} // namespace rb
