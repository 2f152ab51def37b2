#include "desktops/virtual/StatusBar.h"

#include "desktops/virtual/RunLoop.h"

namespace rb {

VirtualStatusItem::VirtualStatusItem(VirtualStatusBar& bar)
    : bar_(bar) {
    bar_.items_.push_back(this);
}

VirtualStatusItem::~VirtualStatusItem() {
    std::erase(bar_.items_, this);
}

std::unique_ptr<StatusItem> VirtualStatusBar::createItem() {
    loop_.requireMainThread("StatusBar::createItem");
    journal_.note("createStatusItem");
    return std::make_unique<VirtualStatusItem>(*this);
}

} // namespace rb
