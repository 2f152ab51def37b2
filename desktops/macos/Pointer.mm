#include "desktops/macos/Pointer.h"

#include "desktops/macos/Bridge.h"

namespace rb {

Point MacPointer::location() const {
    return pointFrom(NSEvent.mouseLocation);
}

unsigned MacPointer::pressedButtons() const {
    return static_cast<unsigned>(NSEvent.pressedMouseButtons);
}

std::uint32_t MacPointer::modifierFlags() const {
    return static_cast<std::uint32_t>(NSEvent.modifierFlags);
}

double MacPointer::doubleClickInterval() const {
    return NSEvent.doubleClickInterval;
}

} // namespace rb
