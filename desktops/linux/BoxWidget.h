#pragma once

#include "desktops/linux/RealizedView.h"

#include <QWidget>

#include <memory>

class QPainter;

namespace rb {

class LayerSurface;

// An area with a layer behind its child, which may take the mouse and the keyboard. The layer is painted on the
// window's canvas, so its shadow reaches beyond the area.
class BoxWidget final : public QWidget, public RealizedView {
public:
    BoxWidget(QWidget& parent, ContentSurroundings& surroundings);
    ~BoxWidget() override;
    BoxWidget(const BoxWidget&) = delete;
    BoxWidget& operator=(const BoxWidget&) = delete;

    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override;
    QSizeF contentSize(double availableWidth) const override;
    void layOut() override;
    void themeChanged() override;
    std::vector<RealizedView*> children() const override;

    bool acceptsFirstResponder() const { return box_.acceptsFirstResponder; }
    void becameFirstResponder();
    void resignedFirstResponder();

    // The window came onto the screen, or went. The layer is shown once it has its place.
    void setOnScreen(bool onScreen);
    void paintLayer(QPainter& painter, const QRectF& area);
    // Of material and layer on the canvas, for entrances.
    void setLayerOpacity(double opacity);
    // Gives up the layer and the keyboard: the view is no longer part of the window.
    void leave();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void showLayer();
    QRectF areaOnCanvas() const;
    bool takesKeys() const;

    ContentSurroundings& surroundings_;
    BoxView box_; // without its child
    RealizedView* child_ = nullptr;
    std::unique_ptr<LayerSurface> surface_;
    bool onScreen_ = false;
    bool entered_ = false;
    double layerOpacity_ = 1;
};

} // namespace rb
