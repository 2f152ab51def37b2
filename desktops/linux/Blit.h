#pragma once

class QImage;
class QRegion;
class QTransform;

namespace rb {

// Lays a turned picture over another, both premultiplied with 32 bits a pixel. Does by hand what QPainter can do too,
// because QPainter hands each turned picture out to threads in small pieces, which costs many times the drawing.
//
// `toTarget` leads from the picture's pixels to the target's; it may turn, shift and scale, best by about 1. Only
// `clip` (target pixels) is touched. The picture needs a transparent edge of one pixel: its outermost pixels are only
// blended into their neighbours. Opacity 0…1.
void blit(QImage& target, const QRegion& clip, const QImage& picture, const QTransform& toTarget, double opacity);

} // namespace rb
