#pragma once

#include "platform/Pointer.h"

namespace rb {

class XConnection;

// Asks the X server each time, so the answer is right during other programs' drags too.
class LinuxPointer final : public Pointer {
public:
    explicit LinuxPointer(XConnection& connection)
        : connection_(connection) {}

    Point location() const override;
    unsigned pressedButtons() const override;

private:
    XConnection& connection_;
};

} // namespace rb
