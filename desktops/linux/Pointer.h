#pragma once

#include "desktops/linux/XConnection.h"
#include "platform/Pointer.h"

namespace rb {

// Asks the X server each time, so the answer is right during other programs' drags too.
class LinuxPointer final : public Pointer {
public:
    explicit LinuxPointer(XConnection& connection)
        : connection_(connection) {}

    Point location() const override;
    unsigned pressedButtons() const override;
    // Control, with which drags copy here, counts as option too.
    std::uint32_t modifierFlags() const override;
    double doubleClickInterval() const override;

private:
    XReply<xcb_query_pointer_reply_t> query() const;

    XConnection& connection_;
};

} // namespace rb
