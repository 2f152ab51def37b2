#include "desktops/linux/StackWidget.h"

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
    for (std::size_t i = 0; i < views_.size(); ++i) {
        const QSizeF size = views_[i]->fittingSize(width);
        measured.sizes.push_back(size);
        measured.length += along(size) + gapAfter(i);
        measured.breadth = std::max(measured.breadth, across(size));
        measured.spacers += views_[i]->isSpacer() ? 1 : 0;
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
    for (std::size_t i = 0; i < views_.size(); ++i) {
        const double length = along(measured.sizes[i]) + (views_[i]->isSpacer() ? share : 0);
        const double natural = std::min(across(measured.sizes[i]), across(area));
        const double breadth = stack_.alignment == StackAlignment::Fill ? across(area) : natural;
        const double aside = stack_.alignment == StackAlignment::Center ? (across(area) - breadth) / 2 : 0;
        const QPointF corner(stack_.insets.left + (isVertical() ? aside : offset),
                             stack_.insets.top + (isVertical() ? offset : aside));
        const QSizeF size = isVertical() ? QSizeF(breadth, length) : QSizeF(length, breadth);
        views_[i]->place({corner, size});
        offset += length + gapAfter(i);
    }
}

} // namespace rb
