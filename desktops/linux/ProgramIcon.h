#pragma once

#include <QIcon>

namespace rb {

// What window managers and task lists show for the program's windows. It is drawn when a window wants it, because most
// days no window is opened. Main thread only.
QIcon programIcon();

} // namespace rb
