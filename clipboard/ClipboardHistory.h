#pragma once

#include "platform/Desktop.h"
#include "platform/Menu.h"

#include <memory>

namespace rb {

// Placeholder of the clipboard history, with the small surface that the spine uses.
class RBClipboardHistory {
public:
    explicit RBClipboardHistory(const Desktop& /*desktop*/) {}

    void start() {}
    const std::shared_ptr<Menu>& menu() const { return menu_; }

private:
    std::shared_ptr<Menu> menu_ = std::make_shared<Menu>("剪贴板历史");
};

} // namespace rb
