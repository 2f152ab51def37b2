#pragma once

#include <QImage>
#include <QPoint>
#include <QString>

#include <string>
#include <vector>
#include <xcb/xcb.h>

// How the chooser looks, as pictures. After Qt's application exists; main thread only.
namespace rb {

class XConnection;

// A dark pill with a text that is readable on anything; `ratio` pixels a point.
QImage labelPicture(const std::string& text, double ratio);

// What can be done now: words, each after the name of its key (empty for none).
struct ChooserHint {
    QString key;
    QString words;
};
QImage hintPicture(const std::vector<ChooserHint>& hints, double ratio);

// The picture with less light, as what isn't chosen looks.
QImage dimmed(const QImage& picture);

// A drawing in black and white with a transparent surrounding: two bits a pixel, as every X server takes it.
struct CursorDrawing {
    QImage black; // where it is black, in one bit
    QImage shape; // where it is black or white, in one bit
    QPoint spot;
};
CursorDrawing crosshairDrawing(double ratio);
CursorDrawing cameraDrawing(double ratio);

// The caller frees it.
xcb_cursor_t makeCursor(XConnection& connection, const CursorDrawing& drawing);

} // namespace rb
