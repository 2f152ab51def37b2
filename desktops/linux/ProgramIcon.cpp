#include "desktops/linux/ProgramIcon.h"

namespace rb {

QIcon programIcon() {
    return QIcon(QStringLiteral(":/icons/rookbay.svg"));
}

} // namespace rb
