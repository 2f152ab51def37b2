#pragma once

#include <QRect>
#include <QRegion>

class QImage;
class QWidget;

// Which part of a window shows and which takes the mouse. For windows that exist on the server; where there is no X
// server windows are whole.
namespace rb {

// The part that takes the mouse, in the widget's coordinates; an empty one lets every click through.
void setInputRegion(QWidget& window, const QRegion& region);
// Cuts the window to the pixels that aren't transparent.
void setShape(QWidget& window, const QImage& picture);
void removeShape(QWidget& window);
// Gives every pixel that is at least half there its full colour and makes the others transparent.
void makeOpaque(QImage& picture, const QRect& pixels);

} // namespace rb
