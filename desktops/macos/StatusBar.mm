#include "desktops/macos/StatusBar.h"

#include "desktops/macos/Bridge.h"
#include "desktops/macos/Menus.h"

namespace rb {

namespace {

class MacStatusItem final : public StatusItem {
public:
    MacStatusItem()
        : item_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]) {}
    ~MacStatusItem() override { [NSStatusBar.systemStatusBar removeStatusItem:item_]; }
    MacStatusItem(const MacStatusItem&) = delete;
    MacStatusItem& operator=(const MacStatusItem&) = delete;

    void setImage(const Image& image) override { item_.button.image = nsImage(image); }
    void setToolTip(const std::string& toolTip) override { item_.button.toolTip = nsString(toolTip); }
    void setMenu(std::shared_ptr<Menu> menu) override { item_.menu = nsMenu(menu); }

private:
    NSStatusItem* item_;
};

} // namespace

std::unique_ptr<StatusItem> MacStatusBar::createItem() {
    return std::make_unique<MacStatusItem>();
}

double MacStatusBar::thickness() const {
    return NSStatusBar.systemStatusBar.thickness;
}

} // namespace rb
