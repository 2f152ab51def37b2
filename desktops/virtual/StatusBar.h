#pragma once

#include "desktops/virtual/Journal.h"
#include "platform/StatusBar.h"

#include <vector>

namespace rb {

class VirtualRunLoop;
class VirtualStatusBar;

class VirtualStatusItem final : public StatusItem {
public:
    explicit VirtualStatusItem(VirtualStatusBar& bar);
    ~VirtualStatusItem() override;
    VirtualStatusItem(const VirtualStatusItem&) = delete;
    VirtualStatusItem& operator=(const VirtualStatusItem&) = delete;

    void setImage(const Image& image) override { image_ = image; }
    void setToolTip(const std::string& toolTip) override { toolTip_ = toolTip; }
    void setMenu(std::shared_ptr<Menu> menu) override { menu_ = std::move(menu); }

    const Image& image() const { return image_; }
    const std::string& toolTip() const { return toolTip_; }
    const std::shared_ptr<Menu>& menu() const { return menu_; }

private:
    VirtualStatusBar& bar_;
    Image image_;
    std::string toolTip_;
    std::shared_ptr<Menu> menu_;
};

class VirtualStatusBar final : public StatusBar {
public:
    VirtualStatusBar(const VirtualRunLoop& loop, Journal& journal)
        : loop_(loop)
        , journal_(journal) {}

    std::unique_ptr<StatusItem> createItem() override;
    double thickness() const override { return thickness_; }

    // In the order of their creation.
    const std::vector<VirtualStatusItem*>& items() const { return items_; }
    void setThickness(double points) { thickness_ = points; }

private:
    friend class VirtualStatusItem;

    const VirtualRunLoop& loop_;
    Journal& journal_;
    std::vector<VirtualStatusItem*> items_;
    double thickness_ = 24;
};

} // namespace rb
