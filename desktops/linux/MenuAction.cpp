#include "desktops/linux/MenuAction.h"

#include "desktops/linux/MenuWidget.h"
#include "desktops/linux/ToolTip.h"

#include <utility>

namespace rb {

MenuAction::MenuAction(std::shared_ptr<MenuItem> item, const Menu& menu, MenuWidget& widget)
    : QAction(&widget)
    , item_(std::move(item))
    , widget_(widget) {
    itemChanged(menu);
    connect(this, &QAction::triggered, this, [this] {
        const std::shared_ptr<MenuItem> chosen = shown(widget_.heldModifiers());
        if (const auto action = chosen->action) {
            action(*chosen);
        }
    });
}

void MenuAction::itemChanged(const Menu& menu) {
    // Qt's own look-ups (typing the first letters, accessibility) go by this text.
    setText(QString::fromStdString(item_->title).replace(QLatin1Char('&'), QStringLiteral("&&")));
    setSeparator(item_->separator);
    setEnabled(menu.isEnabled(*item_));
    setCheckable(item_->on);
    setChecked(item_->on);
    if (!item_->toolTip.empty()) {
        setToolTip(plainToolTip(item_->toolTip));
    }
}

const MenuAction* MenuAction::of(const QStyleOptionMenuItem& option) {
    return dynamic_cast<const MenuAction*>(option.styleObject);
}

const std::shared_ptr<MenuItem>& MenuAction::shown(std::uint32_t heldModifiers) const {
    if (heldModifiers != NoModifiers) {
        for (const auto& alternate : alternates_) {
            if (alternate->keyEquivalentModifiers == heldModifiers) {
                return alternate;
            }
        }
    }
    return item_;
}

} // namespace rb
