#pragma once

#include <QRectF>

class QPainter;

namespace rb {

// The soft shadow of a rounded panel, fading out within `reach` points around it. The panel itself is left open.
void paintShadow(QPainter& painter, const QRectF& panel, double radius, int reach);

} // namespace rb
