#include "desktops/linux/ScrollWidget.h"

#include "desktops/linux/BoxWidget.h"

#include <QPaintEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace rb {

namespace {

constexpr int barWidth = 11;
constexpr int pointsPerNotch = 64;
constexpr int degreesPerNotch = 120; // in eighths
constexpr const char* barStyle =
    "QScrollBar:vertical { background: transparent; width: 11px; margin: 0; border: none; }"
    "QScrollBar::handle:vertical { background: rgba(128, 128, 128, 110); border-radius: 3px; min-height: 32px;"
    "  margin: 2px 3px 2px 2px; }"
    "QScrollBar::handle:vertical:hover { background: rgba(150, 150, 150, 170); }"
    "QScrollBar::add-line, QScrollBar::sub-line { height: 0; border: none; background: none; }"
    "QScrollBar::add-page, QScrollBar::sub-page { background: none; }";

} // namespace

void paintBoxes(RealizedView* view, QPainter& painter, const QRectF& area) {
    if (!view || dynamic_cast<ScrollWidget*>(view)) {
        return;
    }
    if (auto* box = dynamic_cast<BoxWidget*>(view)) {
        painter.save();
        box->paintLayer(painter, area);
        painter.restore();
    }
    for (RealizedView* child : view->children()) {
        paintBoxes(child, painter, area);
    }
}

// What is moved; its parent cuts it off.
class ScrollWidget::Content final : public QWidget {
public:
    explicit Content(ScrollWidget& scroll)
        : QWidget(&scroll)
        , scroll_(scroll) {}

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        paintBoxes(scroll_.child_, painter, event->rect());
    }

private:
    ScrollWidget& scroll_;
};

ScrollWidget::ScrollWidget(QWidget& parent, ContentSurroundings& surroundings)
    : QWidget(&parent)
    , surroundings_(surroundings)
    , content_(new Content(*this))
    , bar_(Qt::Vertical, this) {
    bar_.setStyleSheet(QString::fromLatin1(barStyle));
    bar_.setSingleStep(pointsPerNotch);
    connect(&bar_, &QScrollBar::valueChanged, this, [this] { moveContent(); });
}

bool ScrollWidget::show(ViewContent& content) {
    auto* scroll = std::get_if<ScrollView>(&content);
    if (!scroll) {
        return false;
    }
    if (!scroll->child.empty()) {
        child_ = &realize(child_, std::move(scroll->child.front()), *content_, *this);
    } else if (child_) {
        discard(*std::exchange(child_, nullptr));
    }
    content_->update();
    return true;
}

QSizeF ScrollWidget::contentSize(double availableWidth) const {
    return child_ ? child_->fittingSize(availableWidth) : QSizeF(0, 0);
}

void ScrollWidget::layOut() {
    const int fitting = child_ ? static_cast<int>(std::ceil(child_->fittingSize(width()).height())) : 0;
    const int length = std::max(fitting, height());
    bar_.setRange(0, length - height());
    bar_.setPageStep(height());
    bar_.setGeometry(width() - barWidth, 0, barWidth, height());
    bar_.setVisible(bar_.maximum() > 0);
    bar_.raise();
    content_->setGeometry(0, -bar_.value(), width(), length);
    if (child_) {
        child_->place(QRectF(content_->rect()));
    }
}

std::vector<RealizedView*> ScrollWidget::children() const {
    return child_ ? std::vector{child_} : std::vector<RealizedView*>{};
}

QWidget& ScrollWidget::canvas() {
    return *content_;
}

void ScrollWidget::setOffset(double offset) {
    bar_.setValue(static_cast<int>(std::lround(offset)));
}

void ScrollWidget::moveContent() {
    content_->move(0, -bar_.value());
}

void ScrollWidget::wheelEvent(QWheelEvent* event) {
    const int pixels = event->pixelDelta().y();
    const int down = pixels != 0 ? -pixels : -event->angleDelta().y() * pointsPerNotch / degreesPerNotch;
    bar_.setValue(bar_.value() + down);
    event->accept();
}

} // namespace rb
