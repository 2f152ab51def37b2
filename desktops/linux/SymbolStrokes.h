#pragma once

#include <QByteArray>

namespace rb {

// The drawing of a symbol with strokes that many times as broad. Pure function.
QByteArray withStrokes(const QByteArray& drawing, double scale);

} // namespace rb
