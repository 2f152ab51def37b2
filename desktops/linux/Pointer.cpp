#include "desktops/linux/Pointer.h"

#include "desktops/linux/KeyCodes.h"
#include "desktops/linux/ScreenSpace.h"
#include "desktops/linux/XConnection.h"
#include "platform/Keyboard.h"

#include <QApplication>
#include <QGuiApplication>
#include <QScreen>

namespace rb {

namespace {

// From X11 pixels to Qt's coordinates: each screen keeps its top left corner and is scaled from there.
QPointF toQt(QPoint pixel) {
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect frame = screen->geometry();
        const double ratio = screen->devicePixelRatio();
        if (QRectF(frame.topLeft(), QSizeF(frame.size()) * ratio).toRect().contains(pixel)) {
            return QPointF(frame.topLeft()) + QPointF(pixel - frame.topLeft()) / ratio;
        }
    }
    return pixel;
}

} // namespace

// Our own connection: Qt's reads in a second thread, which each question would wake as well.
XReply<xcb_query_pointer_reply_t> LinuxPointer::query() const {
    XReply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(connection_.get(), xcb_query_pointer(connection_.get(), connection_.root()), nullptr));
    // Events may have come in while the reply was awaited.
    connection_.deliverQueuedEvents();
    return reply;
}

Point LinuxPointer::location() const {
    const auto reply = query();
    return ScreenSpace::current().fromQt(reply ? toQt({reply->root_x, reply->root_y}) : QPointF());
}

unsigned LinuxPointer::pressedButtons() const {
    const auto reply = query();
    if (!reply) {
        return 0;
    }
    const unsigned left = (reply->mask & XCB_BUTTON_MASK_1) != 0 ? 1U : 0U;
    const unsigned right = (reply->mask & XCB_BUTTON_MASK_3) != 0 ? 2U : 0U;
    return left | right;
}

std::uint32_t LinuxPointer::modifierFlags() const {
    const auto reply = query();
    const std::uint32_t flags = reply ? modifierFlagsOfXState(reply->mask) : 0;
    return (flags & ControlModifier) != 0 ? flags | OptionModifier : flags;
}

double LinuxPointer::doubleClickInterval() const {
    return QApplication::doubleClickInterval() / 1000.0;
}

} // namespace rb
