#pragma once

#include "desktops/linux/Pictures.h"
#include "desktops/linux/TrayWatch.h"
#include "platform/Handle.h"
#include "platform/StatusBar.h"

#include <memory>
#include <vector>

namespace rb {

class LinuxAppearance;
class LinuxScreens;
class LinuxStatusBar;
class LinuxStatusItem;
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

    const Image& image() const { return image_; }
    const std::string& toolTip() const { return toolTip_; }
    const std::shared_ptr<Menu>& menu() const { return menu_; }

    // Null hides it until there is a place for it.
    void setPresenter(std::unique_ptr<StatusItemPresenter> presenter) { presenter_ = std::move(presenter); }
    StatusItemPresenter* presenter() const { return presenter_.get(); }

private:
    LinuxStatusBar& bar_;
    Image image_;
    std::string toolTip_;
    std::shared_ptr<Menu> menu_;
    std::unique_ptr<StatusItemPresenter> presenter_;
};

// The session's status bar: a StatusNotifierItem host where there is one, else an XEmbed tray, else a slim menu bar
// of our own along the top edge of the primary screen. Follows what comes and goes; the items move over. Nothing is
// waited for at the start: an item shows as soon as it is known where.
class LinuxStatusBar final : public StatusBar {
public:
    // All of them outlive it. Qt's application must exist.
    LinuxStatusBar(XConnection& connection, RunLoop& loop, LinuxScreens& screens, Symbols& symbols,
                   LinuxAppearance& appearance);
    ~LinuxStatusBar() override;
    LinuxStatusBar(const LinuxStatusBar&) = delete;
    LinuxStatusBar& operator=(const LinuxStatusBar&) = delete;

    std::unique_ptr<StatusItem> createItem() override;
    double thickness() const override;

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
    std::unique_ptr<StatusItemPresenter> present(LinuxStatusItem& item);
    void remove(LinuxStatusItem& item);

    XConnection& connection_;
    RunLoop& loop_;
    LinuxScreens& screens_;
    Pictures pictures_;
    LinuxAppearance& appearance_;
    std::vector<LinuxStatusItem*> items_;
    Place place_ = Place::Undecided;
    std::unique_ptr<MenuBar> ownBar_;
    TrayWatch watch_;
    Handle patience_;
    bool patient_ = true;
    unsigned created_ = 0;
    Handle appearanceChanges_;
};

} // namespace rb
