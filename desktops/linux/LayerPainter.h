#pragma once

#include "desktops/linux/ShadowCache.h"
#include "desktops/linux/SpriteCache.h"
#include "desktops/linux/TextMeter.h"
#include "motion/Layer.h"

#include <QImage>
#include <QRectF>
#include <QRegion>
#include <QString>
#include <QTransform>
#include <vector>

class QPainter;

namespace rb {

class Symbols;

// Paints trees of layers. Keeps what is dear to make (blurred shadows, shaped texts, room for groups) from one paint
// to the next. Main thread only.
//
// A layer's own shadow lies outside its outline only, so that it doesn't darken a translucent layer from behind. A
// shadow follows shadowPath, else the rounded rectangle of a layer with a background or gradient, else the alpha of
// its shape or picture; sublayers alone throw none.
class LayerPainter {
public:
    explicit LayerPainter(Symbols& symbols)
        : symbols_(symbols) {}

    // The layer with all below it, as it looks at that media time. `toCanvas` leads from its superlayer's coordinates
    // to the painter's logical ones. Layers outside `area` (in the latter) may be left out.
    void paint(QPainter& painter, const Layer& layer, double mediaTime, const QTransform& toCanvas, const QRectF& area);
    // The same for a tree that is shown on the screen: what is turned as a whole is painted once and then laid down
    // as a picture. The painter's own clip must be that region; no other clip may be set.
    void paintRegion(QPainter& painter, const Layer& layer, double mediaTime, const QTransform& toCanvas,
                     const QRegion& region);
    // The shadow of something that isn't a layer, everywhere outside it. The offset grows downwards.
    void paintShadow(QPainter& painter, const QPainterPath& shape, double radius, const QPointF& offset,
                     double opacity);

    // Gives back memory that is needed only while something moves.
    void rest() { groups_.clear(); }
    const ShadowCache& shadows() const { return shadows_; }
    // Told of what changes in trees that are shown.
    SpriteCache& sprites() { return sprites_; }

private:
    // What a part of the tree is painted on.
    struct Canvas {
        QPainter& painter;
        QRectF area;
        double mediaTime;
        double pixelsPerPoint;
        QRegion sprites = {}; // where sprites may be laid down, in the device's pixels; empty for no sprites
    };
    struct ShapedText {
        TextContent text; // without its colour
        double width = 0;
        TextLine line;
    };
    class Group;

    void paintLayer(const Canvas& canvas, const Layer& layer, const QTransform& superlayer);
    // False when it is no layer for that, and nothing was painted.
    bool paintSprite(const Canvas& canvas, const std::shared_ptr<Layer>& layer, const QTransform& superlayer);
    SpriteCache::Sprite makeSprite(const Layer& layer, const LayerModel& model, double mediaTime, double scale);
    void paintAsGroup(const Canvas& canvas, const Layer& layer, const LayerModel& model, const QTransform& transform,
                      const QTransform& superlayer);
    void paintInside(const Canvas& canvas, const Layer& layer, const LayerModel& model, const QTransform& transform);
    void paintSublayer(const Canvas& canvas, const std::shared_ptr<Layer>& layer, const QTransform& transform);
    void paintSublayers(const Canvas& canvas, const Layer& layer, const QTransform& transform);
    bool paintGradientThroughShape(const Canvas& canvas, const Layer& layer, const LayerModel& model,
                                   const QTransform& transform);
    void paintShadowOf(const Canvas& canvas, const LayerModel& model);
    void fillShadow(QPainter& painter, const ShadowCaster& caster, const QPainterPath& cutOut, double radius,
                    const QPointF& offset, const QColor& color, double pixelsPerPoint);
    void paintContents(const Canvas& canvas, const LayerModel& model);
    void paintText(const Canvas& canvas, const LayerModel& model, const TextContent& text, const QTransform& transform);
    const TextLine& shaped(const TextContent& text, double width);
    QImage pictureOf(const LayerModel& model, const QSizeF& size, double pixelsPerPoint);

    Symbols& symbols_;
    ShadowCache shadows_;
    SpriteCache sprites_;
    std::vector<ShapedText> texts_; // the least recently used one first
    std::vector<QImage> groups_;    // room for the group at each depth
    std::size_t depth_ = 0;
};

} // namespace rb
