#pragma once

#include <QRect>

class QImage;
class QWidget;

// What Qt has no words for about windows on X11. All of it is for windows that exist on the server, and does nothing
// where there is no X server.
namespace rb {

// The part that takes the mouse, in the widget's coordinates; an empty rectangle lets every click through.
void setInputRegion(QWidget& window, const QRect& region);
// Cuts the window to the pixels that aren't transparent.
void setShape(QWidget& window, const QImage& picture);
void removeShape(QWidget& window);
// Gives every pixel that is at least half there its full colour and makes the others transparent.
void makeOpaque(QImage& picture, const QRect& pixels);

// Keeps a compositor from drawing a shadow of its own around the window.
void setWithoutCompositorShadow(QWidget& window);
void setOnAllDesktops(QWidget& window);

} // namespace rb
