#include "desktops/linux/ScreenSpace.h"

#include <QGuiApplication>
#include <QScreen>

namespace rb {

ScreenSpace ScreenSpace::current() {
    const QScreen* primary = QGuiApplication::primaryScreen();
    return ScreenSpace(primary != nullptr ? primary->geometry() : QRect());
}

} // namespace rb
