#pragma once

#include "desktops/linux/RealizedView.h"

#include <QScrollBar>
#include <QWidget>

namespace rb {

// Paints the layers of the boxes under a view, those of other scroll areas left out: they have a canvas of their own.
void paintBoxes(RealizedView* view, QPainter& painter, const QRectF& area);

// An area whose content is moved up and down by the wheel and a slim bar. The boxes in it are painted on the content,
// so they move and are cut off with it.
class ScrollWidget final : public QWidget, public RealizedView, private ContentSurroundings {
public:
    ScrollWidget(QWidget& parent, ContentSurroundings& surroundings);

    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override;
    QSizeF contentSize(double availableWidth) const override;
    void layOut() override;
    std::vector<RealizedView*> children() const override;

    // Points from the top of the content.
    double offset() const { return bar_.value(); }
    void setOffset(double offset);

protected:
    void wheelEvent(QWheelEvent* event) override;

private:
    class Content;

    LayerTicker& ticker() const override { return surroundings_.ticker(); }
    const Pictures& pictures() const override { return surroundings_.pictures(); }
    const Theme& theme() const override { return surroundings_.theme(); }
    QWidget& canvas() override;
    void makeFirstResponder(BoxWidget& box) override { surroundings_.makeFirstResponder(box); }
    bool isFirstResponder(const BoxWidget& box) const override { return surroundings_.isFirstResponder(box); }
    void boxGone(BoxWidget& box) override { surroundings_.boxGone(box); }
    void moveContent();

    ContentSurroundings& surroundings_;
    Content* content_; // owned by this
    QScrollBar bar_;
    RealizedView* child_ = nullptr;
};

} // namespace rb
