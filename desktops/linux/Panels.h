#pragma once

#include "desktops/linux/Compositor.h"
#include "desktops/linux/DragSource.h"
#include "desktops/linux/LayerPainter.h"
#include "desktops/linux/LayerSurface.h"
#include "platform/Panels.h"

#include <QImage>
#include <QRect>
#include <memory>
#include <vector>

class QPainter;
class QRegion;
class QWidget;

namespace rb {

class LinuxPanels;
class MenuWidget;
class Pictures;
class Symbols;
class XConnection;

// A panel is a window without frame that bypasses the window manager when its level says that it lies above other
// programs' windows. Under a compositor it is translucent; without one it is cut to what is drawn and opaque there.
// A shadow is drawn by us, in a margin around the panel's frame.
class LinuxPanel final : public Panel {
public:
    LinuxPanel(LinuxPanels& panels, const PanelSpec& spec);
    ~LinuxPanel() override;
    LinuxPanel(const LinuxPanel&) = delete;
    LinuxPanel& operator=(const LinuxPanel&) = delete;

    Rect frame() const override { return spec_.frame; }
    void setFrame(const Rect& frame) override;
    void orderFrontRegardless() override;
    void orderOut() override;
    bool isVisible() const override { return surface_.isShown(); }
    void setIgnoresMouseEvents(bool ignores) override;
    bool setMouseAreas(const std::vector<Rect>& areas) override;
    void setInput(PanelInput* input) override { input_ = input; }
    void beginDrag(const FileDrag& drag) override;
    void showContextMenu(const std::shared_ptr<Menu>& menu, Point location, std::function<void()> closed) override;
    const std::shared_ptr<Layer>& rootLayer() override { return surface_.root(); }
    double backingScaleFactor() const override;

private:
    friend class LinuxPanels;
    class Window;

    void createWindow();
    void layOut();
    void place();
    void applyInputRegion();
    // Between the window's coordinates and the root layer's.
    Point toLayer(QPointF place) const;
    QPointF fromLayer(Point location) const;
    void repaint(const QRegion& region);
    void paint(const QRegion& region);
    void paintContent(QPainter& painter, const QRegion& region);
    void paintWindowShadow(QPainter& painter);
    void paintShaped(const QRegion& region);
    void compositorChanged();

    LinuxPanels& panels_;
    PanelSpec spec_;
    PanelInput* input_ = nullptr;
    std::vector<Rect> mouseAreas_; // in the root layer
    std::unique_ptr<MenuWidget> contextMenu_;
    LayerSurface surface_;
    std::unique_ptr<Window> window_; // from the first time it is shown
    bool translucent_ = true;
    QImage opaque_; // without a compositor: what is shown
};

class LinuxPanels final : public Panels {
public:
    // All outlive it; the connection is null where there is no X server.
    LinuxPanels(LayerTicker& ticker, XConnection* connection, const Pictures& pictures);
    ~LinuxPanels() override;

    std::unique_ptr<Panel> createPanel(const PanelSpec& spec) override;

private:
    friend class LinuxPanel;
    // Puts the panel in front of those of its level and below, behind those of higher ones.
    void bringToFront(LinuxPanel& panel);

    LayerTicker& ticker_;
    const Pictures& pictures_;
    DragSource dragSource_;
    Compositor compositor_;
    std::vector<LinuxPanel*> panels_; // as they were ordered front
};

} // namespace rb
