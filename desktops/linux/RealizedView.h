#pragma once

#include "desktops/linux/Pictures.h"
#include "platform/View.h"

#include <QMarginsF>
#include <QRectF>
#include <QSizeF>

#include <string>

class QWidget;

namespace rb {

class BoxWidget;
class LayerTicker;
struct Theme;

// What the widgets of a window's content need from around them. Outlives them.
class ContentSurroundings {
public:
    virtual ~ContentSurroundings() = default;
    virtual LayerTicker& ticker() const = 0;
    virtual const Pictures& pictures() const = 0;
    virtual const Theme& theme() const = 0;
    // Under which the boxes' layers are painted.
    virtual QWidget& canvas() = 0;
    virtual void makeFirstResponder(BoxWidget& box) = 0;
    virtual bool isFirstResponder(const BoxWidget& box) const = 0;
    // The box is about to go, or takes no keys any more.
    virtual void boxGone(BoxWidget& box) = 0;
};

// A view of the product as a widget: it keeps the widget while the same kind of view stays at its place.
class RealizedView {
public:
    virtual ~RealizedView() = default;

    virtual QWidget& widget() = 0;
    // Takes the content over; false when it is of another kind and needs another widget.
    virtual bool show(ViewContent& content) = 0;
    // The size that the content asks for when it gets at most that width.
    virtual QSizeF contentSize(double availableWidth) const = 0;
    // Around the frame: what the widget draws outside of its alignment rectangle (a focus ring).
    virtual QMarginsF outset() const { return {}; }
    // Lays out the children after the widget got its place. Rectangles in the widget's coordinates.
    virtual void layOut() {}
    virtual void themeChanged() {}
    virtual bool isSpacer() const { return false; }
    // The children in their order, for visits to the whole tree.
    virtual std::vector<RealizedView*> children() const { return {}; }

    // What every view has besides its content.
    void takeCommon(const View& view);
    QSizeF fittingSize(double availableWidth) const;
    void place(const QRectF& frame);
    const std::string& identifier() const { return identifier_; }
    double gapAfter(double spacing) const { return spacingAfter_.value_or(spacing); }
    // Takes the space along its stack that the others leave.
    bool takesSpace() const { return expands_ || isSpacer(); }
    bool fillsBreadth() const { return fillsBreadth_; }

private:
    std::string identifier_;
    std::optional<double> width_;
    std::optional<double> height_;
    std::optional<double> spacingAfter_;
    bool expands_ = false;
    bool fillsBreadth_ = false;
};

// Shows the view in place of `existing` (may be null), in its widget when it can keep it, else in a new child of the
// parent, which then owns it. A widget that can't be kept goes in a later turn of the event loop: one of its own
// callbacks may be what renders anew.
RealizedView& realize(RealizedView* existing, View&& view, QWidget& parent, ContentSurroundings& surroundings);

// Takes the view off the screen and ends it in a later turn of the event loop.
void discard(RealizedView& view);

} // namespace rb
