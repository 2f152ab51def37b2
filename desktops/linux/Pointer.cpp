#include "desktops/linux/Pointer.h"

#include "desktops/linux/ScreenSpace.h"

#include <QCursor>

namespace rb {

Point LinuxPointer::location() const {
    return ScreenSpace::current().fromQt(QPointF(QCursor::pos()));
}

} // namespace rb
