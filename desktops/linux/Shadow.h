#pragma once

#include <QRectF>

class QPainter;
class QWidget;

namespace rb {

// The soft shadow of a rounded panel, fading out within `reach` points around it. The panel itself is left open.
void paintShadow(QPainter& painter, const QRectF& panel, double radius, int reach);

// For windows that paint their own: compositors that shade every window would add a rectangular one. The window
// must exist or be about to be shown.
void refuseCompositorShadow(QWidget& window);

} // namespace rb
