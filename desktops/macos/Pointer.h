#pragma once

#include "platform/Pointer.h"

namespace rb {

class MacPointer final : public Pointer {
public:
    Point location() const override;
    unsigned pressedButtons() const override;
    std::uint32_t modifierFlags() const override;
    double doubleClickInterval() const override;
};

} // namespace rb
