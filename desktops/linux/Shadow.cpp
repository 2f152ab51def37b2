#include "desktops/linux/Shadow.h"

#include "desktops/linux/XConnection.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QWidget>

#include <string_view>

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

void refuseCompositorShadow(QWidget& window) {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11) {
        return;
    }
    xcb_connection_t* connection = x11->connection();
    constexpr std::string_view name = "_COMPTON_SHADOW";
    const XReply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, name.size(), name.data()), nullptr));
    if (atom) {
        const std::uint32_t none = 0;
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()), atom->atom,
                            XCB_ATOM_CARDINAL, 32, 1, &none);
    }
}

} // namespace rb
