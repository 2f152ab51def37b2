#pragma once

#include <QIcon>
#include <QString>

namespace rb {

// An icon by its freedesktop name, else by the other one, in the session's icon theme: Qt's, else the one of GTK's
// settings, else one that is installed, since a session without a desktop names none. Null when there is no such icon.
// Main thread only.
QIcon iconFromTheme(const QString& name, const QString& otherwise = {});

} // namespace rb
