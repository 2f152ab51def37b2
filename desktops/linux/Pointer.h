#pragma once

#include "platform/Pointer.h"

namespace rb {

// Asks the X server each time, so the answer is right during other programs' drags too.
class LinuxPointer final : public Pointer {
public:
    Point location() const override;
};

} // namespace rb
