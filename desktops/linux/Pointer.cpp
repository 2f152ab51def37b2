#include "desktops/linux/Pointer.h"

#include "desktops/linux/ScreenSpace.h"
#include "desktops/linux/XConnection.h"

#include <QCursor>

namespace rb {

Point LinuxPointer::location() const {
    return ScreenSpace::current().fromQt(QPointF(QCursor::pos()));
}

unsigned LinuxPointer::pressedButtons() const {
    const XReply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(connection_.get(), xcb_query_pointer(connection_.get(), connection_.root()), nullptr));
    if (!reply) {
        return 0;
    }
    const unsigned left = (reply->mask & XCB_BUTTON_MASK_1) != 0 ? 1U : 0U;
    const unsigned right = (reply->mask & XCB_BUTTON_MASK_3) != 0 ? 2U : 0U;
    // Events may have come in while the reply was awaited.
    connection_.deliverQueuedEvents();
    return left | right;
}

} // namespace rb
