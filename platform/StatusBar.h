#pragma once

#include "motion/Image.h"
#include "platform/Menu.h"

#include <memory>
#include <optional>
#include <string>

namespace rb {

// One item in the system's status bar. Destruction takes it away. Main thread only.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    virtual void setImage(const Image& image) = 0;
    virtual void setToolTip(const std::string& toolTip) = 0;
    // Opens on a click. Shared with the product, which keeps filling it; null takes the menu off.
    virtual void setMenu(std::shared_ptr<Menu> menu) = 0;
};

// The system's status bar.
class StatusBar {
public:
    virtual ~StatusBar() = default;

    // A new item of variable length (as wide as its picture asks).
    virtual std::unique_ptr<StatusItem> createItem() = 0;
    // Height of the bar in points, also where a menu bar is hidden.
    virtual double thickness() const = 0;
};

} // namespace rb
