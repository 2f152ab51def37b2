#pragma once

#include "desktops/virtual/Journal.h"
#include "platform/Handle.h"
#include "platform/Observers.h"
#include "platform/StatusBar.h"

#include <map>
#include <string>
#include <vector>

namespace rb {

class VirtualRunLoop;
class VirtualScreens;
class VirtualStatusBar;
class VirtualStatusItem;

// The bubble below an item. It closes a moment after it was asked to, as an animated one.
class VirtualPopover final : public Popover {
public:
    static constexpr double closingTime = 0.25;

    VirtualPopover(VirtualStatusBar& bar, PopoverSpec spec);
    ~VirtualPopover() override;
    VirtualPopover(const VirtualPopover&) = delete;
    VirtualPopover& operator=(const VirtualPopover&) = delete;

    void close() override;

    const View& content() const { return spec_.content; }
    // The user's acts; throw ImpossibleAct when they can't be done.
    void clickButton(const std::string& title);
    void pressReturn();
    void pressElsewhere() { close(); }

private:
    VirtualStatusBar& bar_;
    PopoverSpec spec_;
    Handle closing_;
};

class VirtualStatusItem final : public StatusItem {
public:
    explicit VirtualStatusItem(VirtualStatusBar& bar);
    ~VirtualStatusItem() override;
    VirtualStatusItem(const VirtualStatusItem&) = delete;
    VirtualStatusItem& operator=(const VirtualStatusItem&) = delete;

    void setImage(const Image& image) override { image_ = image; }
    void setToolTip(const std::string& toolTip) override { toolTip_ = toolTip; }
    void setMenu(std::shared_ptr<Menu> menu) override { menu_ = std::move(menu); }
    void setLength(double length) override { length_ = length; }
    void setAutosaveName(const std::string& name) override { autosaveName_ = name; }
    void setVisible(bool visible) override { visible_ = visible; }
    bool isVisible() const override { return visible_; }
    void setAction(std::function<void(const StatusItemClick& click)> action) override { action_ = std::move(action); }
    void popUpMenu(std::shared_ptr<Menu> menu) override { poppedUp_ = std::move(menu); }
    void setLayerBacked(bool layerBacked) override { layerBacked_ = layerBacked; }
    void addTransition(const std::string& key, const PushTransition& transition) override;
    std::optional<Rect> frame() const override;
    std::unique_ptr<Popover> showPopover(PopoverSpec spec) override;

    const Image& image() const { return image_; }
    const std::string& toolTip() const { return toolTip_; }
    const std::shared_ptr<Menu>& menu() const { return menu_; }
    // Nothing while it is as long as its picture asks.
    std::optional<double> length() const { return length_; }
    const std::string& autosaveName() const { return autosaveName_; }
    // All that were added under a key, in order.
    const std::vector<PushTransition>& transitions(const std::string& key) { return transitions_[key]; }

    // The user's act; throws ImpossibleAct when the item isn't in the bar.
    void click(const StatusItemClick& click = {});
    // The menu that popped up last.
    const std::shared_ptr<Menu>& poppedUp() const { return poppedUp_; }

private:
    VirtualStatusBar& bar_;
    Image image_;
    std::string toolTip_;
    std::shared_ptr<Menu> menu_;
    std::optional<double> length_;
    std::string autosaveName_;
    bool visible_ = true;
    bool layerBacked_ = false;
    std::function<void(const StatusItemClick& click)> action_;
    std::shared_ptr<Menu> poppedUp_;
    std::map<std::string, std::vector<PushTransition>> transitions_;
};

// A bar along the top of the primary screen, filled from its right end, with icons of other programs between ours.
class VirtualStatusBar final : public StatusBar {
public:
    VirtualStatusBar(VirtualRunLoop& loop, const VirtualScreens& screens, Journal& journal)
        : loop_(loop)
        , screens_(screens)
        , journal_(journal) {}

    std::unique_ptr<StatusItem> createItem() override;
    double thickness() const override { return thickness_; }
    bool longItemsPushOthersOut() const override { return pushesOut_; }
    Handle onBarChange(std::function<void()> changed) override { return barChanges_.add(std::move(changed)); }

    // In the order of their creation.
    const std::vector<VirtualStatusItem*>& items() const { return items_; }
    void setThickness(double points) { thickness_ = points; }

    // Another program's icon arrives at the left end; ours are named by their autosave names.
    void addIcon(const std::string& name) { places_.push_back({nullptr, name}); }
    // The user drags an icon or item to the right or the left side of another one.
    void dragRightOf(const std::string& name, const std::string& other) { drag(name, other, 0); }
    void dragLeftOf(const std::string& name, const std::string& other) { drag(name, other, 1); }
    // The names of what can be seen, from the left.
    std::vector<std::string> seen() const;
    // A bar that arranges its items by itself takes the place of this one, or the other way round.
    void moveToBar(bool pushesOut) {
        pushesOut_ = pushesOut;
        barChanges_.notify();
    }
    // With false, items have no windows.
    void setHasWindows(bool has) { hasWindows_ = has; }
    // The bubble that is shown; null when there is none.
    VirtualPopover* popover() const { return popover_; }

private:
    friend class VirtualPopover;
    friend class VirtualStatusItem;

    struct Place {
        VirtualStatusItem* item = nullptr; // null for another program's icon
        std::string icon = {};

        std::string name() const { return item != nullptr ? item->autosaveName() : icon; }
        double width() const;
    };
    std::vector<std::pair<std::string, Rect>> frames() const;
    void drag(const std::string& name, const std::string& other, std::ptrdiff_t side);

    VirtualRunLoop& loop_;
    const VirtualScreens& screens_;
    Journal& journal_;
    std::vector<VirtualStatusItem*> items_;
    std::vector<Place> places_; // from the right
    double thickness_ = 24;
    bool pushesOut_ = true;
    bool hasWindows_ = true;
    VirtualPopover* popover_ = nullptr;
    Observers<> barChanges_;
};

} // namespace rb
