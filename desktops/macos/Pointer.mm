#include "desktops/macos/Pointer.h"

#include "desktops/macos/Bridge.h"

namespace rb {

Point MacPointer::location() const {
    return pointFrom(NSEvent.mouseLocation);
}

unsigned MacPointer::pressedButtons() const {
    return static_cast<unsigned>(NSEvent.pressedMouseButtons);
}

} // namespace rb
