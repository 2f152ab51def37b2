#include "desktops/linux/Shadow.h"

#include <QPainter>
#include <QPainterPath>

namespace rb {

void paintShadow(QPainter& painter, const QRectF& panel, double radius, int reach) {
    // Rounded rectangles laid over each other, each a point larger: their faint fills add up towards the panel. The
    // light comes from above, so the lower side reaches further.
    constexpr double drop = 4;
    const double steps = reach - drop;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath open;
    open.addRect(panel.adjusted(-reach, -reach, reach, reach));
    QPainterPath hole;
    hole.addRoundedRect(panel.adjusted(1, 1, -1, -1), radius, radius);
    painter.setClipPath(open.subtracted(hole));
    painter.setPen(Qt::NoPen);
    for (double grow = steps; grow > 0; grow -= 1) {
        const double nearness = 1 - grow / steps;
        QColor shade(0, 0, 0);
        shade.setAlphaF(static_cast<float>(0.005 + 0.030 * nearness * nearness));
        painter.setBrush(shade);
        painter.drawRoundedRect(panel.adjusted(-grow, -grow + drop, grow, grow + drop), radius + grow, radius + grow);
    }
    painter.restore();
}

} // namespace rb
