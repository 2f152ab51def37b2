#pragma once

#include "desktops/linux/BarOrder.h"
#include "desktops/linux/Pictures.h"
#include "desktops/linux/TrayWatch.h"
#include "platform/Handle.h"
#include "platform/Observers.h"
#include "platform/StatusBar.h"

#include <QRect>

#include <memory>
#include <vector>

namespace rb {

class EventMonitors;
class IconHost;
class LinuxAppearance;
class LinuxScreens;
class LinuxStatusBar;
class LinuxStatusItem;
class LinuxUserDefaults;
class LinuxWindows;
class MenuBar;
class RunLoop;
class XConnection;

// How one item shows in one kind of bar. Destruction takes it away there.
class StatusItemPresenter {
public:
    virtual ~StatusItemPresenter() = default;
    virtual void imageChanged() = 0;
    virtual void toolTipChanged() = 0;
    virtual void menuChanged() = 0;
    // Only our own bar gives items the length that they ask for.
    virtual void lengthChanged() {}
    virtual void popUpMenu(std::shared_ptr<Menu> menu) = 0;
    virtual void addTransition(const PushTransition& /*transition*/) {}
    // In Qt's coordinates of the screen; nothing where whoever shows it doesn't tell.
    virtual std::optional<QRect> areaOnScreen() const = 0;
};

// One item of the status bar, wherever the session shows it now.
class LinuxStatusItem final : public StatusItem {
public:
    explicit LinuxStatusItem(LinuxStatusBar& bar);
    ~LinuxStatusItem() override;
    LinuxStatusItem(const LinuxStatusItem&) = delete;
    LinuxStatusItem& operator=(const LinuxStatusItem&) = delete;

    void setImage(const Image& image) override;
    void setToolTip(const std::string& toolTip) override;
    void setMenu(std::shared_ptr<Menu> menu) override;
    void setLength(double length) override;
    void setAutosaveName(const std::string& name) override { name_ = name; }
    void setVisible(bool visible) override;
    bool isVisible() const override { return visible_; }
    void setAction(std::function<void(const StatusItemClick& click)> action) override { action_ = std::move(action); }
    void popUpMenu(std::shared_ptr<Menu> menu) override;
    void setLayerBacked(bool /*layerBacked*/) override {} // every item of our own bar can move its picture
    void addTransition(const std::string& key, const PushTransition& transition) override;
    std::optional<Rect> frame() const override;
    std::unique_ptr<Popover> showPopover(PopoverSpec spec) override;

    const Image& image() const { return image_; }
    const std::string& toolTip() const { return toolTip_; }
    const std::shared_ptr<Menu>& menu() const { return menu_; }
    std::optional<double> length() const { return length_; }
    const std::string& name() const { return name_; }
    bool hasAction() const { return action_ != nullptr; }
    // The user's click, as whoever shows the item noticed it.
    void clicked(const StatusItemClick& click) const;

    // Null hides it until there is a place for it.
    void setPresenter(std::unique_ptr<StatusItemPresenter> presenter) { presenter_ = std::move(presenter); }
    StatusItemPresenter* presenter() const { return presenter_.get(); }

private:
    LinuxStatusBar& bar_;
    Image image_;
    std::string toolTip_;
    std::shared_ptr<Menu> menu_;
    std::optional<double> length_;
    std::string name_ = "RookBay";
    bool visible_ = true;
    std::function<void(const StatusItemClick& click)> action_;
    std::unique_ptr<StatusItemPresenter> presenter_;
};

// The session's status bar: a StatusNotifierItem host where there is one, else an XEmbed tray, else a slim menu bar
// of our own along the top edge of the primary screen, which then hosts the icons of other programs too. Follows what
// comes and goes; the items move over. Nothing is waited for at the start: an item shows as soon as it is known where.
class LinuxStatusBar final : public StatusBar {
public:
    // All of them outlive it. Qt's application must exist.
    struct Surroundings {
        XConnection& connection;
        RunLoop& loop;
        LinuxUserDefaults& defaults;
        LinuxScreens& screens;
        Symbols& symbols;
        LinuxAppearance& appearance;
        LinuxWindows& windows;
        EventMonitors& monitors;
    };
    explicit LinuxStatusBar(const Surroundings& surroundings);
    ~LinuxStatusBar() override;
    LinuxStatusBar(const LinuxStatusBar&) = delete;
    LinuxStatusBar& operator=(const LinuxStatusBar&) = delete;

    std::unique_ptr<StatusItem> createItem() override;
    double thickness() const override;
    bool longItemsPushOthersOut() const override { return place_ == Place::OwnBar || place_ == Place::Undecided; }
    Handle onBarChange(std::function<void()> changed) override { return barChanges_.add(std::move(changed)); }

    enum class Place { Undecided, Notifier, Tray, OwnBar };
    Place place() const { return place_; }
    // In the order of their creation.
    const std::vector<LinuxStatusItem*>& items() const { return items_; }
    // Null while another bar shows the items.
    MenuBar* ownBar() const { return ownBar_.get(); }

private:
    friend class LinuxStatusItem;

    void decide();
    void moveTo(Place place);
    void showOwnBar();
    void hideOwnBar();
    // Gives every visible item a presenter, in the order of their creation.
    void presentItems();
    std::unique_ptr<StatusItemPresenter> present(LinuxStatusItem& item);
    void remove(LinuxStatusItem& item);

    Surroundings with_;
    Pictures pictures_;
    BarOrder order_;
    std::vector<LinuxStatusItem*> items_;
    Place place_ = Place::Undecided;
    std::unique_ptr<MenuBar> ownBar_;
    std::unique_ptr<IconHost> icons_; // with our own bar
    TrayWatch watch_;
    Handle patience_;
    bool patient_ = true;
    unsigned created_ = 0;
    Observers<> barChanges_;
    Handle appearanceChanges_;
    Lifetime lifetime_;
};

} // namespace rb
