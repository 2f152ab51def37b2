#include "desktops/linux/StackWidget.h"

#include "desktops/linux/BoxWidget.h"
#include "motion/TimingCurve.h"

#include <QGraphicsOpacityEffect>
#include <QVariantAnimation>

#include <algorithm>
#include <utility>

namespace rb {

StackWidget::StackWidget(QWidget& parent, ContentSurroundings& surroundings)
    : QWidget(&parent)
    , surroundings_(surroundings) {}

SpacerWidget::SpacerWidget(QWidget& parent)
    : QWidget(&parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

bool StackWidget::show(ViewContent& content) {
    auto* stack = std::get_if<StackView>(&content);
    if (!stack) {
        return false;
    }
    std::vector<View> wanted = std::exchange(stack->children, {});
    stack_ = std::move(*stack);
    endEntrance();
    std::vector<RealizedView*> previous = std::exchange(views_, {});
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        RealizedView* existing = i < previous.size() ? previous[i] : nullptr;
        views_.push_back(&realize(existing, std::move(wanted[i]), *this, surroundings_));
    }
    for (std::size_t i = wanted.size(); i < previous.size(); ++i) {
        discard(*previous[i]);
    }
    return true;
}

double StackWidget::gapAfter(std::size_t index) const {
    return index + 1 < views_.size() ? views_[index]->gapAfter(stack_.spacing) : 0;
}

StackWidget::Measured StackWidget::measure(double availableWidth) const {
    const double width = std::max(availableWidth - stack_.insets.left - stack_.insets.right, 0.0);
    Measured measured;
    double gaps = 0;
    for (std::size_t i = 0; i < views_.size(); ++i) {
        gaps += gapAfter(i);
    }
    const double share = views_.empty() ? 0 : std::max(width - gaps, 0.0) / static_cast<double>(views_.size());
    for (std::size_t i = 0; i < views_.size(); ++i) {
        QSizeF size = views_[i]->fittingSize(isEqually() ? share : width);
        if (isEqually()) {
            size.setWidth(share);
        } else if (views_[i]->takesSpace()) {
            isVertical() ? size.setHeight(0) : size.setWidth(0);
        }
        measured.sizes.push_back(size);
        measured.length += along(size) + gapAfter(i);
        measured.breadth = std::max(measured.breadth, across(size));
        measured.spacers += !isEqually() && views_[i]->takesSpace() ? 1 : 0;
    }
    if (!isVertical() && measured.length > width) {
        // Too much for one row: the widest gives way, which shortens or wraps its text.
        const auto widest = std::max_element(measured.sizes.begin(), measured.sizes.end(),
                                             [](const QSizeF& a, const QSizeF& b) { return a.width() < b.width(); });
        const auto index = static_cast<std::size_t>(widest - measured.sizes.begin());
        const double narrower = std::max(widest->width() - (measured.length - width), 0.0);
        const QSizeF again = views_[index]->fittingSize(narrower);
        measured.length += narrower - widest->width();
        *widest = {narrower, again.height()};
        measured.breadth = std::max(measured.breadth, again.height());
    }
    return measured;
}

QSizeF StackWidget::contentSize(double availableWidth) const {
    const Measured measured = measure(availableWidth);
    const double width = isVertical() ? measured.breadth : measured.length;
    const double height = isVertical() ? measured.length : measured.breadth;
    return {width + stack_.insets.left + stack_.insets.right, height + stack_.insets.top + stack_.insets.bottom};
}

void StackWidget::layOut() {
    const Measured measured = measure(width());
    const QSizeF area(width() - stack_.insets.left - stack_.insets.right,
                      height() - stack_.insets.top - stack_.insets.bottom);
    const double left = std::max(along(area) - measured.length, 0.0);
    const double share = measured.spacers > 0 ? left / measured.spacers : 0;
    double offset = 0;
    frames_.clear();
    for (std::size_t i = 0; i < views_.size(); ++i) {
        const double length = along(measured.sizes[i]) + (!isEqually() && views_[i]->takesSpace() ? share : 0);
        const double natural = std::min(across(measured.sizes[i]), across(area));
        const bool fills = stack_.alignment == StackAlignment::Fill || views_[i]->fillsBreadth();
        const double breadth = fills ? across(area) : natural;
        const double aside = stack_.alignment == StackAlignment::Center ? (across(area) - breadth) / 2 : 0;
        const QPointF corner(stack_.insets.left + (isVertical() ? aside : offset),
                             stack_.insets.top + (isVertical() ? offset : aside));
        const QSizeF size = isVertical() ? QSizeF(breadth, length) : QSizeF(length, breadth);
        frames_.emplace_back(corner, size);
        views_[i]->place(frames_.back());
        offset += length + gapAfter(i);
    }
}

void StackWidget::reveal(const Reveal& reveal) {
    endEntrance();
    if (views_.empty() || frames_.size() != views_.size()) {
        return;
    }
    for (RealizedView* view : views_) {
        view->widget().setGraphicsEffect(new QGraphicsOpacityEffect(&view->widget())); // the widget's own from now on
    }
    const double length =
        reveal.duration + reveal.delay * static_cast<double>(std::min(views_.size() - 1, reveal.last));
    entrance_ = new QVariantAnimation(this);
    entrance_->setStartValue(0.0);
    entrance_->setEndValue(length);
    entrance_->setDuration(static_cast<int>(length * 1000));
    connect(entrance_, &QVariantAnimation::valueChanged, this,
            [this, reveal](const QVariant& seconds) { showEntrance(reveal, seconds.toDouble()); });
    connect(entrance_, &QVariantAnimation::finished, this, [this] { endEntrance(); });
    showEntrance(reveal, 0);
    entrance_->start();
}

void StackWidget::showEntrance(const Reveal& reveal, double seconds) {
    for (std::size_t i = 0; i < views_.size() && i < frames_.size(); ++i) {
        const double begin = reveal.delay * static_cast<double>(std::min(i, reveal.last));
        const double progress = RBEaseOut.at((seconds - begin) / reveal.duration);
        if (auto* effect = qobject_cast<QGraphicsOpacityEffect*>(views_[i]->widget().graphicsEffect())) {
            effect->setOpacity(progress);
        }
        if (auto* box = dynamic_cast<BoxWidget*>(views_[i])) {
            box->setLayerOpacity(progress);
        }
        views_[i]->place(frames_[i].translated(0, reveal.slide * (1 - progress)));
    }
}

void StackWidget::endEntrance() {
    if (QVariantAnimation* ended = std::exchange(entrance_, nullptr)) {
        ended->disconnect(this);
        ended->stop();
        ended->deleteLater();
        for (std::size_t i = 0; i < views_.size() && i < frames_.size(); ++i) {
            views_[i]->widget().setGraphicsEffect(nullptr);
            if (auto* box = dynamic_cast<BoxWidget*>(views_[i])) {
                box->setLayerOpacity(1);
            }
            views_[i]->place(frames_[i]);
        }
    }
}

} // namespace rb
