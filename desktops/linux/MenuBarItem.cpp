#include "desktops/linux/MenuBarItem.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/MenuBar.h"
#include "desktops/linux/MenuWidget.h"
#include "desktops/linux/ToolTip.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

constexpr double symbolSize = 17.6; // 22 points wide
constexpr int side = 7;             // left and right of the picture
constexpr double highlightRadius = 5;

} // namespace

MenuBarItem::MenuBarItem(LinuxStatusItem& item, MenuBar& bar, const Pictures& pictures,
                         const LinuxAppearance& appearance)
    : QWidget(&bar)
    , item_(item)
    , bar_(&bar)
    , pictures_(pictures)
    , appearance_(appearance) {
    bar.addItem(*this);
    toolTipChanged();
    menuChanged();
    imageChanged();
}

MenuBarItem::~MenuBarItem() {
    if (parentWidget()) {
        bar_->removeItem(*this);
    }
}

void MenuBarItem::imageChanged() {
    if (const auto* symbol = std::get_if<Symbol>(&item_.image())) {
        setAccessibleName(QString::fromStdString(symbol->accessibilityDescription));
    }
    bar_->layOutItems();
    update();
}

void MenuBarItem::toolTipChanged() {
    setToolTip(plainToolTip(item_.toolTip()));
}

void MenuBarItem::menuChanged() {
    menu_.reset();
}

QSize MenuBarItem::sizeHint() const {
    const int picture = static_cast<int>(std::ceil(pictures_.size(item_.image(), symbolSize).width()));
    return {std::max(picture, 1) + 2 * side, MenuBar::thickness};
}

bool MenuBarItem::menuIsOpen() const {
    return menu_ && menu_->isVisible();
}

void MenuBarItem::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const Theme& theme = appearance_.theme();
    if (menuIsOpen()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.dark ? QColor(255, 255, 255, 44) : QColor(0, 0, 0, 28));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0, 3, 0, -4), highlightRadius, highlightRadius);
    }
    // The hairline at the bar's lower edge is no part of the area.
    pictures_.draw(painter, item_.image(), QRectF(rect()).adjusted(0, 0, 0, -1), symbolSize, theme.label);
}

void MenuBarItem::mousePressEvent(QMouseEvent* /*event*/) {
    openMenu();
}

void MenuBarItem::openMenu() {
    if (!item_.menu()) {
        return;
    }
    if (!menu_) {
        menu_ = std::make_unique<MenuWidget>(item_.menu(), pictures_);
        menu_->setOpener(this);
        connect(menu_.get(), &QMenu::aboutToHide, this,
                [this] { QMetaObject::invokeMethod(this, qOverload<>(&QWidget::update), Qt::QueuedConnection); });
    }
    menu_->openBeside(QRect(mapToGlobal(QPoint(0, 0)), size()));
    update();
}

} // namespace rb
