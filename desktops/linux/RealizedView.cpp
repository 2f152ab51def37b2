#include "desktops/linux/RealizedView.h"
#include "desktops/linux/BoxWidget.h"
#include "desktops/linux/ButtonWidget.h"
#include "desktops/linux/ChoiceWidgets.h"
#include "desktops/linux/ImageWidget.h"
#include "desktops/linux/LabelWidget.h"
#include "desktops/linux/ScrollWidget.h"
#include "desktops/linux/StackWidget.h"
#include "desktops/linux/ToolTip.h"

#include <cmath>
#include <utility>

namespace rb {

namespace {

// One widget for each kind of view.
struct Maker {
    QWidget& parent;
    ContentSurroundings& surroundings;

    RealizedView* operator()(const LabelView& /*label*/) const { return new LabelWidget(parent, surroundings); }
    RealizedView* operator()(const ButtonView& /*button*/) const { return new ButtonWidget(parent, surroundings); }
    RealizedView* operator()(const ImageView& /*image*/) const { return new ImageWidget(parent, surroundings); }
    RealizedView* operator()(const StackView& /*stack*/) const { return new StackWidget(parent, surroundings); }
    RealizedView* operator()(const SpacerView& /*spacer*/) const { return new SpacerWidget(parent); }
    RealizedView* operator()(const BoxView& /*box*/) const { return new BoxWidget(parent, surroundings); }
    RealizedView* operator()(const ScrollView& /*scroll*/) const { return new ScrollWidget(parent, surroundings); }
    RealizedView* operator()(const CheckBoxView& /*box*/) const { return new CheckBoxWidget(parent); }
    RealizedView* operator()(const PopUpView& /*popUp*/) const { return new PopUpWidget(parent); }
};

} // namespace

void RealizedView::takeCommon(const View& view) {
    identifier_ = view.identifier;
    width_ = view.width;
    height_ = view.height;
    spacingAfter_ = view.spacingAfter;
    expands_ = view.expands;
    fillsBreadth_ = view.fillsBreadth;
    const QString toolTip = view.toolTip.empty() ? QString() : plainToolTip(view.toolTip);
    if (widget().toolTip() != toolTip) {
        widget().setToolTip(toolTip);
    }
}

QSizeF RealizedView::fittingSize(double availableWidth) const {
    const QSizeF asked = contentSize(width_.value_or(availableWidth));
    return {width_.value_or(asked.width()), height_.value_or(asked.height())};
}

void RealizedView::place(const QRectF& frame) {
    const QRectF outer = frame.marginsAdded(outset());
    // Edges are rounded one by one, so that neighbours keep touching.
    const int left = static_cast<int>(std::lround(outer.left()));
    const int top = static_cast<int>(std::lround(outer.top()));
    const int right = static_cast<int>(std::lround(outer.right()));
    const int bottom = static_cast<int>(std::lround(outer.bottom()));
    widget().setGeometry(left, top, right - left, bottom - top);
    layOut();
}

RealizedView& realize(RealizedView* existing, View&& view, QWidget& parent, ContentSurroundings& surroundings) {
    RealizedView* realized = existing;
    if (!existing || !existing->show(view.content)) {
        if (existing) {
            discard(*existing);
        }
        realized = std::visit(Maker{parent, surroundings}, view.content);
        realized->show(view.content);
        realized->widget().show();
    }
    realized->takeCommon(view);
    return *realized;
}

void discard(RealizedView& view) {
    for (RealizedView* child : view.children()) {
        discard(*child);
    }
    if (auto* box = dynamic_cast<BoxWidget*>(&view)) {
        box->leave();
    }
    view.widget().hide();
    view.widget().deleteLater();
}

} // namespace rb
