#include "app/CardView.h"

#include <utility>

namespace rb {

namespace {

struct Style {
    Color background;
    Color border;
    double shadowOpacity;
};
constexpr Style restingStyle{Color::white(1, 0.055), Color::white(1, 0.09), 0};
constexpr Style hoveredStyle{Color::white(1, 0.085), Color::white(1, 0.2), 0.3};

} // namespace

RBCardView::RBCardView() {
    LayerModel& model = layer_->change();
    model.cornerRadius = 20;
    model.borderWidth = 1;
    model.shadowColor = {0, 0, 0, 1};
    model.shadowRadius = 16;
    model.shadowOffset = {0, -5};
    applyStyle({.animated = false});
}

View RBCardView::view(View content, const Insets& insets) {
    BoxView box;
    box.layer = layer_;
    box.insets = insets;
    box.child.push_back(std::move(content));
    box.mouseEntered = [this] { mouseEntered(); };
    box.mouseExited = [this] { mouseExited(); };
    box.updateLayer = [this] { applyStyle({.animated = false}); };
    return {.content = std::move(box)};
}

void RBCardView::mouseEntered() {
    hovered_ = true;
    applyStyle({.animated = true});
}

void RBCardView::mouseExited() {
    hovered_ = false;
    applyStyle({.animated = true});
}

void RBCardView::applyStyle(StyleOptions options) {
    const Style& style = hovered_ ? hoveredStyle : restingStyle;
    if (options.animated) {
        RBAnimateLayerValue(layer_, KeyPath::BackgroundColor, style.background, 0.2);
        RBAnimateLayerValue(layer_, KeyPath::BorderColor, style.border, 0.2);
        RBAnimateLayerValue(layer_, KeyPath::ShadowOpacity, style.shadowOpacity, 0.25);
        return;
    }
    LayerModel& model = layer_->change();
    model.backgroundColor = style.background;
    model.borderColor = style.border;
    model.shadowOpacity = style.shadowOpacity;
}

} // namespace rb
