#include "desktops/linux/MenuBarItem.h"

#include "desktops/linux/Appearance.h"
#include "desktops/linux/ItemClick.h"
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
    connect(&push_, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(&push_, &QVariantAnimation::finished, this, [this] { pushedOut_ = {}; });
    toolTipChanged();
    bar.addEntry(*this);
    imageChanged();
}

MenuBarItem::~MenuBarItem() {
    bar_->removeEntry(*this);
}

void MenuBarItem::imageChanged() {
    if (const auto* symbol = std::get_if<Symbol>(&item_.image())) {
        setAccessibleName(QString::fromStdString(symbol->accessibilityDescription));
    }
    if (!item_.length()) {
        bar_->layOutEntries();
    }
    update();
}

void MenuBarItem::toolTipChanged() {
    setToolTip(plainToolTip(item_.toolTip()));
}

void MenuBarItem::menuChanged() {
    menu_.reset();
}

void MenuBarItem::lengthChanged() {
    bar_->layOutEntries();
}

int MenuBarItem::breadth() const {
    if (item_.length()) {
        return static_cast<int>(std::lround(*item_.length()));
    }
    const int picture = static_cast<int>(std::ceil(pictures_.size(item_.image(), symbolSize).width()));
    return std::max(picture, 1) + 2 * side;
}

void MenuBarItem::placeAt(const QRect& area) {
    setGeometry(area);
    setVisible(!area.isEmpty());
}

std::optional<QRect> MenuBarItem::areaOnScreen() const {
    return QRect(mapToGlobal(QPoint(0, 0)), size());
}

bool MenuBarItem::menuIsOpen() const {
    return menu_ && menu_->isVisible();
}

// The pushed picture moves by the item's own breadth.
void MenuBarItem::addTransition(const PushTransition& transition) {
    push_.stop();
    const double scale = devicePixelRatioF();
    pushedOut_ = QPixmap((QSizeF(size()) * scale).toSize());
    pushedOut_.setDevicePixelRatio(scale);
    pushedOut_.fill(Qt::transparent);
    QPainter painter(&pushedOut_);
    drawPicture(painter, 0);
    painter.end();
    pushSide_ = transition.from == PushTransition::From::Left ? 1 : -1;
    push_.setDuration(static_cast<int>(std::lround(transition.duration * 1000)));
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({transition.timing.control1.x, transition.timing.control1.y},
                                {transition.timing.control2.x, transition.timing.control2.y}, {1, 1});
    push_.setEasingCurve(curve);
    push_.setStartValue(0.0);
    push_.setEndValue(1.0);
    push_.start();
}

void MenuBarItem::drawPicture(QPainter& painter, double shift) const {
    pictures_.draw(painter, item_.image(), QRectF(rect()).translated(shift, 0), symbolSize, appearance_.theme().label);
}

void MenuBarItem::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const Theme& theme = appearance_.theme();
    if (menuIsOpen()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.dark ? QColor(255, 255, 255, 44) : QColor(0, 0, 0, 28));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0, 3, 0, -3), highlightRadius, highlightRadius);
    }
    if (pushedOut_.isNull()) {
        drawPicture(painter, 0);
        return;
    }
    const double progress = push_.currentValue().toDouble();
    const double way = rect().width();
    painter.setOpacity(1 - progress);
    painter.drawPixmap(QPointF(pushSide_ * way * progress, 0), pushedOut_);
    painter.setOpacity(progress);
    drawPicture(painter, -pushSide_ * way * (1 - progress));
}

void MenuBarItem::mousePressEvent(QMouseEvent* /*event*/) {
    if (item_.menu()) {
        openMenu(item_.menu());
    }
}

void MenuBarItem::mouseReleaseEvent(QMouseEvent* event) {
    const auto click = clickOf(*event);
    if (click && !item_.menu() && rect().contains(event->pos())) {
        item_.clicked(*click);
    }
}

void MenuBarItem::popUpMenu(std::shared_ptr<Menu> menu) {
    openMenu(menu);
}

void MenuBarItem::openMenu(const std::shared_ptr<Menu>& menu) {
    if (!menu_ || shownMenu_ != menu) {
        shownMenu_ = menu;
        menu_ = std::make_unique<MenuWidget>(menu, pictures_);
        menu_->setOpener(this);
        connect(menu_.get(), &QMenu::aboutToHide, this,
                [this] { QMetaObject::invokeMethod(this, qOverload<>(&QWidget::update), Qt::QueuedConnection); });
    }
    // A dot that is longer than the bar has its menu where it ends.
    QRect area(mapToGlobal(QPoint(0, 0)), size());
    const QRect bar(bar_->mapToGlobal(QPoint(0, 0)), bar_->size());
    area.setLeft(std::max(area.left(), bar.left()));
    menu_->openBeside(area);
    update();
}

} // namespace rb
