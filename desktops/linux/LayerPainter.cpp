#include "desktops/linux/LayerPainter.h"

#include "desktops/linux/Bitmap.h"
#include "desktops/linux/Blit.h"
#include "desktops/linux/LayerGeometry.h"
#include "desktops/linux/Symbols.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace rb {

namespace {

constexpr std::size_t textCacheSize = 64;

QColor toQt(const Color& color) {
    const auto part = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(part(color.red), part(color.green), part(color.blue), part(color.alpha));
}

Qt::PenCapStyle toQt(LineCap cap) {
    return cap == LineCap::Round ? Qt::RoundCap : Qt::FlatCap;
}

QPen penOf(const ShapeContent& shape, const QBrush& brush) {
    return {brush, shape.lineWidth, Qt::SolidLine, toQt(shape.lineCap), Qt::MiterJoin};
}

QLinearGradient gradientOf(const GradientContent& content, const Rect& bounds) {
    const auto place = [&bounds](Point unit) {
        return QPointF(bounds.x + unit.x * bounds.width, bounds.y + unit.y * bounds.height);
    };
    QLinearGradient gradient(place(content.startPoint), place(content.endPoint));
    const std::size_t count = content.colors.size();
    for (std::size_t i = 0; i < count; ++i) {
        const double even = count > 1 ? static_cast<double>(i) / static_cast<double>(count - 1) : 0;
        gradient.setColorAt(std::clamp(i < content.locations.size() ? content.locations[i] : even, 0.0, 1.0),
                            toQt(content.colors[i]));
    }
    return gradient;
}

bool throwsItsOutline(const LayerModel& model) {
    return (model.backgroundColor && model.backgroundColor->alpha > 0) ||
           std::holds_alternative<GradientContent>(model.content);
}

// How many things that can lie on each other the layer itself shows.
int layersOfPaint(const LayerModel& model) {
    const bool shadowBeneath = model.shadowOpacity > 0 && !model.shadowPath && !throwsItsOutline(model);
    return int{model.backgroundColor.has_value()} + int{model.borderWidth > 0} + int{shadowBeneath} +
           int{!std::holds_alternative<std::monostate>(model.content)} +
           int{!std::holds_alternative<std::monostate>(model.contents)};
}

// A falling card, say: all in its picture.
bool isBarePicture(const LayerModel& model) {
    return std::holds_alternative<std::shared_ptr<const Bitmap>>(model.contents) && layersOfPaint(model) == 1 &&
           model.shadowOpacity <= 0 && !model.masksToBounds;
}

bool staysUpright(const QTransform& transform) {
    return transform.type() <= QTransform::TxScale;
}

// The pixels that the painter ends up in; null when it doesn't paint on a picture of the usual kind.
QImage* targetOf(const QPainter& painter) {
    const QPaintEngine* engine = painter.paintEngine();
    QPaintDevice* device = engine ? engine->paintDevice() : nullptr;
    if (!device || device->devType() != QInternal::Image) {
        return nullptr;
    }
    auto* image = static_cast<QImage*>(device);
    return image->format() == QImage::Format_ARGB32_Premultiplied || image->format() == QImage::Format_RGB32 ? image
                                                                                                             : nullptr;
}

QTransform movedBy(const QTransform& transform, const QPointF& offset) {
    return transform * QTransform::fromTranslate(offset.x(), offset.y());
}

} // namespace

// A canvas of its own for a part of the tree, in pixels of the one it will be laid on.
class LayerPainter::Group {
public:
    Group(LayerPainter& owner, const Canvas& canvas, const QRectF& area)
        : owner_(owner) {
        // Whole pixels of the canvas below, so that laying the group on it doesn't blur it.
        const double scale = canvas.painter.device()->devicePixelRatioF();
        const QRect pixels = QRectF(area.topLeft() * scale, area.size() * scale).toAlignedRect();
        origin_ = QPointF(pixels.topLeft()) / scale;
        if (owner.groups_.size() <= owner.depth_) {
            owner.groups_.emplace_back();
        }
        QImage& room = owner.groups_[owner.depth_++];
        if (room.width() < pixels.width() || room.height() < pixels.height()) {
            room = QImage(pixels.size().expandedTo(room.size()), QImage::Format_ARGB32_Premultiplied);
        }
        for (int y = 0; y < pixels.height(); ++y) {
            std::memset(room.scanLine(y), 0, static_cast<std::size_t>(pixels.width()) * sizeof(QRgb));
        }
        image_ = QImage(room.bits(), pixels.width(), pixels.height(), room.bytesPerLine(), room.format());
        image_.setDevicePixelRatio(scale);
        painter_.begin(&image_);
        painter_.setRenderHints(canvas.painter.renderHints());
    }
    ~Group() { --owner_.depth_; }
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;

    QPainter& painter() { return painter_; }
    Canvas canvas(const Canvas& below) {
        return {painter_, QRectF({}, image_.deviceIndependentSize()), below.mediaTime, below.pixelsPerPoint};
    }
    QTransform transform(const QTransform& below) const { return movedBy(below, -origin_); }
    void layOn(QPainter& painter, const QPointF& at, double opacity) {
        painter_.end();
        painter.resetTransform();
        painter.setOpacity(opacity);
        painter.drawImage(at, image_);
        painter.setOpacity(1);
    }
    const QPointF& origin() const { return origin_; }

private:
    LayerPainter& owner_;
    QPointF origin_;
    QImage image_;
    QPainter painter_;
};

void LayerPainter::paint(QPainter& painter, const Layer& layer, double mediaTime, const QTransform& toCanvas,
                         const QRectF& area) {
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    const double pixelsPerPoint = painter.device()->devicePixelRatioF();
    paintLayer({painter, area, mediaTime, pixelsPerPoint}, layer, toCanvas);
    painter.restore();
}

void LayerPainter::paintRegion(QPainter& painter, const Layer& layer, double mediaTime, const QTransform& toCanvas,
                               const QRegion& region) {
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    const double pixelsPerPoint = painter.device()->devicePixelRatioF();
    Canvas canvas{painter, region.boundingRect(), mediaTime, pixelsPerPoint};
    // At a fractional scale the region's edges don't lie between pixels.
    if (pixelsPerPoint == std::floor(pixelsPerPoint) && targetOf(painter)) {
        const QTransform toDevice = painter.deviceTransform();
        for (const QRect& part : region) {
            canvas.sprites += toDevice.mapRect(part);
        }
    }
    paintLayer(canvas, layer, toCanvas);
    painter.restore();
}

// Only what is turned or masked is worth a picture: the rest is painted as fast.
bool LayerPainter::paintSprite(const Canvas& canvas, const std::shared_ptr<Layer>& layer,
                               const QTransform& superlayer) {
    const bool bare = layer->sublayers().empty();
    if (canvas.sprites.isEmpty() || (bare && !isBarePicture(layer->model())) || !isStillInside(*layer) ||
        !movesAsAWhole(*layer)) {
        return false;
    }
    const ShownModel model(*layer, canvas.mediaTime);
    if (model->hidden || model->opacity <= 0) {
        return true;
    }
    const QTransform transform = transformOf(*model, superlayer);
    if (model->transform.scale != 1 || (transform.type() < QTransform::TxRotate && !layer->mask())) {
        return false;
    }
    if (!paintedRect(*layer, canvas.mediaTime, superlayer).intersects(canvas.area)) {
        return true;
    }
    // Finer than the screen where that is coarse, so that turned texts stay clear.
    const double scale = std::max(bare ? model->contentsScale : 2.0, canvas.pixelsPerPoint);
    const SpriteCache::Sprite* sprite = sprites_.find(*layer, scale);
    if (!sprite) {
        sprite = &sprites_.keep(layer, scale, makeSprite(*layer, *model, canvas.mediaTime, scale));
    }
    canvas.painter.setTransform(transform);
    const QRectF& rect = sprite->rect;
    const QTransform fromPixels(1 / scale, 0, 0, -1 / scale, rect.left(), rect.bottom());
    blit(*targetOf(canvas.painter), canvas.sprites, sprite->image, fromPixels * canvas.painter.deviceTransform(),
         model->opacity);
    return true;
}

SpriteCache::Sprite LayerPainter::makeSprite(const Layer& layer, const LayerModel& model, double mediaTime,
                                             double scale) {
    const QTransform place = transformOf(model, {});
    const QRectF covered = paintedRect(layer, mediaTime, place.inverted());
    const QRect pixels =
        QRectF(covered.topLeft() * scale, covered.size() * scale).toAlignedRect().adjusted(-1, -1, 1, 1);
    SpriteCache::Sprite sprite;
    sprite.rect = QRectF(QPointF(pixels.topLeft()) / scale, QSizeF(pixels.size()) / scale);
    sprite.image = QImage(pixels.size(), QImage::Format_ARGB32_Premultiplied);
    sprite.image.fill(Qt::transparent);
    sprite.image.setDevicePixelRatio(scale);
    QPainter painter(&sprite.image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    const QRectF canvasRect({}, sprite.rect.size());
    const QTransform toCanvas(1, 0, 0, -1, -sprite.rect.left(), sprite.rect.bottom());
    LayerModel solid = model;
    solid.opacity = 1;
    const Canvas canvas{painter, canvasRect.adjusted(1 / scale, 1 / scale, -1 / scale, -1 / scale), mediaTime, scale};
    if (layer.mask()) {
        paintAsGroup(canvas, layer, solid, toCanvas, place.inverted() * toCanvas);
    } else {
        paintInside(canvas, layer, solid, toCanvas);
    }
    return sprite;
}

void LayerPainter::paintLayer(const Canvas& canvas, const Layer& layer, const QTransform& superlayer) {
    const ShownModel model(layer, canvas.mediaTime);
    if (model->hidden || model->opacity <= 0) {
        return;
    }
    const QTransform transform = transformOf(*model, superlayer);
    if (paintGradientThroughShape(canvas, layer, *model, transform)) {
        return;
    }
    const int layers = layersOfPaint(*model) + static_cast<int>(layer.sublayers().size());
    const bool roundMask = model->masksToBounds && layers > 0 && !layer.sublayers().empty() &&
                           (model->cornerRadius > 0 || !staysUpright(transform));
    if (layer.mask() || (model->opacity < 1 && layers > 1) || roundMask) {
        paintAsGroup(canvas, layer, *model, transform, superlayer);
        return;
    }
    canvas.painter.setOpacity(std::min(1.0, model->opacity));
    paintInside(canvas, layer, *model, transform);
    canvas.painter.setOpacity(1);
}

void LayerPainter::paintAsGroup(const Canvas& canvas, const Layer& layer, const LayerModel& model,
                                const QTransform& transform, const QTransform& superlayer) {
    const QRectF area = paintedRect(layer, canvas.mediaTime, superlayer) & canvas.area;
    if (area.isEmpty()) {
        return;
    }
    Group group(*this, canvas, area);
    const QTransform inGroup = group.transform(transform);
    const Canvas groupCanvas = group.canvas(canvas);
    paintInside(groupCanvas, layer, model, inGroup);
    if (model.masksToBounds && model.cornerRadius > 0 && !layer.sublayers().empty()) {
        QPainterPath outside = outlineOf(model);
        outside.addRect(inGroup.inverted().mapRect(groupCanvas.area).adjusted(-1, -1, 1, 1));
        group.painter().setTransform(inGroup);
        group.painter().setCompositionMode(QPainter::CompositionMode_DestinationOut);
        group.painter().fillPath(outside, Qt::black);
    }
    if (layer.mask()) {
        Group mask(*this, groupCanvas, groupCanvas.area);
        paintLayer(mask.canvas(groupCanvas), *layer.mask(), mask.transform(inGroup));
        group.painter().setCompositionMode(QPainter::CompositionMode_DestinationIn);
        mask.layOn(group.painter(), mask.origin(), 1);
    }
    group.layOn(canvas.painter, group.origin(), std::min(1.0, model.opacity));
}

void LayerPainter::paintInside(const Canvas& canvas, const Layer& layer, const LayerModel& model,
                               const QTransform& transform) {
    QPainter& painter = canvas.painter;
    const bool touched = ownPaintedRect(model, transform).intersects(canvas.area);
    if (touched) {
        painter.setTransform(transform);
        if (model.shadowOpacity > 0 && !model.masksToBounds) {
            paintShadowOf(canvas, model);
        }
        if (model.backgroundColor && model.backgroundColor->alpha > 0) {
            painter.fillPath(outlineOf(model), toQt(*model.backgroundColor));
        }
        if (const auto* gradient = std::get_if<GradientContent>(&model.content)) {
            painter.fillPath(outlineOf(model), gradientOf(*gradient, model.bounds));
        }
    }
    // Round masks were seen to by a group; what is left are upright rectangles.
    const bool clips = model.masksToBounds && model.cornerRadius <= 0;
    if (clips) {
        painter.save();
        painter.setTransform(transform);
        painter.setClipRect(rb::toQt(model.bounds), Qt::IntersectClip);
    }
    if (touched) {
        if (const auto* shape = std::get_if<ShapeContent>(&model.content)) {
            const QPainterPath path = rb::toQt(shape->path);
            if (shape->fillColor) {
                painter.fillPath(path, toQt(*shape->fillColor));
            }
            if (shape->strokeColor && shape->lineWidth > 0) {
                painter.strokePath(path, penOf(*shape, toQt(*shape->strokeColor)));
            }
        } else if (const auto* text = std::get_if<TextContent>(&model.content)) {
            paintText(canvas, model, *text, transform);
        }
        paintContents(canvas, model);
    }
    if (clips) {
        paintSublayers({painter, canvas.area, canvas.mediaTime, canvas.pixelsPerPoint}, layer, transform);
        painter.restore();
    } else {
        paintSublayers(canvas, layer, transform);
    }
    if (touched && model.borderWidth > 0) {
        const double inset = model.borderWidth / 2;
        painter.setTransform(transform);
        painter.strokePath(outlineOf(rb::toQt(model.bounds).adjusted(inset, inset, -inset, -inset),
                                     model.cornerRadius - inset, model.continuousCorners),
                           QPen(toQt(model.borderColor), model.borderWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    }
}

void LayerPainter::paintSublayer(const Canvas& canvas, const std::shared_ptr<Layer>& layer,
                                 const QTransform& transform) {
    if (!paintSprite(canvas, layer, transform)) {
        paintLayer(canvas, *layer, transform);
    }
}

void LayerPainter::paintSublayers(const Canvas& canvas, const Layer& layer, const QTransform& transform) {
    const auto& sublayers = layer.sublayers();
    const auto lower = [](const auto& a, const auto& b) { return a->model().zPosition < b->model().zPosition; };
    if (std::is_sorted(sublayers.begin(), sublayers.end(), lower)) {
        for (const auto& sublayer : sublayers) {
            paintSublayer(canvas, sublayer, transform);
        }
        return;
    }
    auto ordered = sublayers;
    std::stable_sort(ordered.begin(), ordered.end(), lower);
    for (const auto& sublayer : ordered) {
        paintSublayer(canvas, sublayer, transform);
    }
}

// A gradient that shows only where a shape masks it (the rim of a card) is that shape drawn with the gradient; no
// group is needed. False when the layer is anything else.
bool LayerPainter::paintGradientThroughShape(const Canvas& canvas, const Layer& layer, const LayerModel& model,
                                             const QTransform& transform) {
    const auto* gradient = std::get_if<GradientContent>(&model.content);
    if (!gradient || !layer.mask() || !layer.mask()->sublayers().empty() || layer.mask()->mask() ||
        !layer.sublayers().empty() || layersOfPaint(model) > 1 || model.shadowOpacity > 0 || model.cornerRadius > 0) {
        return false;
    }
    const ShownModel mask(*layer.mask(), canvas.mediaTime);
    const auto* shape = std::get_if<ShapeContent>(&mask->content);
    const QTransform inLayer = transformOf(*mask, QTransform());
    if (!shape || shape->fillColor.has_value() == shape->strokeColor.has_value() || layersOfPaint(*mask) > 1 ||
        mask->shadowOpacity > 0 || mask->masksToBounds || mask->hidden || inLayer.type() > QTransform::TxTranslate) {
        return false;
    }
    if (!ownPaintedRect(model, transform).intersects(canvas.area)) {
        return true;
    }
    const double alpha = (shape->fillColor ? *shape->fillColor : *shape->strokeColor).alpha;
    QPainter& painter = canvas.painter;
    painter.setTransform(transform);
    painter.setOpacity(std::clamp(model.opacity * mask->opacity * alpha, 0.0, 1.0));
    const QBrush brush(gradientOf(*gradient, model.bounds));
    const QPainterPath path = inLayer.map(rb::toQt(shape->path));
    if (shape->fillColor) {
        painter.fillPath(path, brush);
    } else {
        painter.strokePath(path, penOf(*shape, brush));
    }
    painter.setOpacity(1);
    return true;
}

void LayerPainter::paintShadowOf(const Canvas& canvas, const LayerModel& model) {
    ShadowCaster caster;
    QPainterPath cutOut;
    double alpha = model.shadowOpacity * model.shadowColor.alpha;
    if (model.shadowPath) {
        caster.path = rb::toQt(*model.shadowPath);
        cutOut = caster.path;
    } else if (throwsItsOutline(model)) {
        caster.path = outlineOf(model);
        cutOut = caster.path;
        if (std::holds_alternative<std::monostate>(model.content)) {
            alpha *= model.backgroundColor->alpha;
        }
    } else if (const auto* shape = std::get_if<ShapeContent>(&model.content)) {
        caster.path = rb::toQt(shape->path);
        if (!shape->fillColor && shape->strokeColor) {
            caster.strokeWidth = shape->lineWidth;
            caster.cap = toQt(shape->lineCap);
        }
    } else if (const QSizeF size = contentsSize(model); !size.isEmpty()) {
        caster.picture = pictureOf(model, size, canvas.pixelsPerPoint);
        caster.pictureRect = contentsRect(model, size);
    }
    if (caster.path.isEmpty() && caster.picture.isNull()) {
        return;
    }
    const double opacity = canvas.painter.opacity();
    canvas.painter.setOpacity(opacity * std::clamp(alpha, 0.0, 1.0));
    fillShadow(canvas.painter, caster, cutOut, model.shadowRadius,
               {model.shadowOffset.width, model.shadowOffset.height}, toQt(model.shadowColor), canvas.pixelsPerPoint);
    canvas.painter.setOpacity(opacity);
}

void LayerPainter::fillShadow(QPainter& painter, const ShadowCaster& caster, const QPainterPath& cutOut, double radius,
                              const QPointF& offset, const QColor& color, double pixelsPerPoint) {
    const ShadowCache::Shadow& shadow = shadows_.shadow(caster, radius, color, pixelsPerPoint);
    const QRectF rect = shadow.rect.translated(offset);
    QBrush brush(shadow.image);
    brush.setTransform(QTransform(rect.width() / shadow.image.width(), 0, 0, rect.height() / shadow.image.height(),
                                  rect.x(), rect.y()));
    if (cutOut.isEmpty()) {
        painter.fillRect(rect, brush);
        return;
    }
    QPainterPath outside = cutOut;
    outside.setFillRule(Qt::OddEvenFill);
    outside.addRect(rect | cutOut.controlPointRect());
    painter.fillPath(outside, brush);
}

void LayerPainter::paintShadow(QPainter& painter, const QPainterPath& shape, double radius, const QPointF& offset,
                               double opacity) {
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setOpacity(opacity);
    fillShadow(painter, {.path = shape}, shape, radius, offset, Qt::black, painter.device()->devicePixelRatioF());
    painter.restore();
}

QImage LayerPainter::pictureOf(const LayerModel& model, const QSizeF& size, double pixelsPerPoint) {
    const QSizeF drawn = contentsRect(model, size).size();
    // Sharp at rest; while an animation scales the layer the same picture serves.
    const double scale = std::max(pixelsPerPoint, model.contentsScale);
    const QSize pixels = (drawn * scale).toSize().expandedTo({1, 1});
    if (const auto* symbol = std::get_if<Symbol>(&model.contents)) {
        return symbols_.image(*symbol, std::max(pixels.width(), pixels.height()),
                              QGuiApplication::palette().color(QPalette::WindowText));
    }
    if (const auto* shared = std::get_if<std::shared_ptr<const Bitmap>>(&model.contents)) {
        if (const auto* bitmap = dynamic_cast<const LinuxBitmap*>(shared->get())) {
            return bitmap->halvedTo((drawn * pixelsPerPoint).toSize());
        }
    }
    return {};
}

void LayerPainter::paintContents(const Canvas& canvas, const LayerModel& model) {
    const QSizeF size = contentsSize(model);
    if (size.isEmpty()) {
        return;
    }
    const QImage picture = pictureOf(model, size, canvas.pixelsPerPoint);
    const QRectF rect = contentsRect(model, size);
    if (picture.isNull() || rect.isEmpty()) {
        return;
    }
    QPainter& painter = canvas.painter;
    if (model.masksToBounds && model.cornerRadius > 0) {
        QBrush brush(picture);
        brush.setTransform(QTransform(rect.width() / picture.width(), 0, 0, -rect.height() / picture.height(), rect.x(),
                                      rect.bottom()));
        QPainterPath seen = outlineOf(model);
        if (!rect.contains(rb::toQt(model.bounds))) {
            QPainterPath edges;
            edges.addRect(rect);
            seen &= edges;
        }
        painter.fillPath(seen, brush);
        return;
    }
    const QTransform upwards = painter.transform();
    painter.setTransform(flipped(rect), true);
    painter.drawImage(QRectF({}, rect.size()), picture);
    painter.setTransform(upwards);
}

const TextLine& LayerPainter::shaped(const TextContent& text, double width) {
    const auto known = std::find_if(texts_.begin(), texts_.end(), [&](const ShapedText& entry) {
        return entry.width == width && entry.text.text == text.text && entry.text.font == text.font &&
               entry.text.truncation == text.truncation;
    });
    if (known != texts_.end()) {
        std::rotate(known, known + 1, texts_.end());
        return texts_.back().line;
    }
    const QFont font = interfaceFont(text.font);
    QString string = QString::fromStdString(text.text);
    TextLine line = layOutLine(string, font);
    // The room was often made to measure; a rounding error is no reason to cut a text.
    constexpr double slack = 0.5;
    if (text.truncation != Truncation::None && line.width > width + slack) {
        const auto mode = text.truncation == Truncation::Middle ? Qt::ElideMiddle : Qt::ElideRight;
        string = QFontMetricsF(font).elidedText(string, mode, width);
        line = layOutLine(string, font);
    }
    if (texts_.size() == textCacheSize) {
        texts_.erase(texts_.begin());
    }
    texts_.push_back({text, width, std::move(line)});
    return texts_.back().line;
}

void LayerPainter::paintText(const Canvas& canvas, const LayerModel& model, const TextContent& text,
                             const QTransform& transform) {
    const QRectF bounds = rb::toQt(model.bounds);
    const TextLine& line = shaped(text, bounds.width());
    const double room = bounds.width() - line.width;
    double x = 0;
    if (room > 0 && text.alignment != TextAlignment::Left) {
        x = text.alignment == TextAlignment::Center ? room / 2 : room;
    }
    QPainter& painter = canvas.painter;
    painter.setTransform(flipped(bounds), true);
    painter.setPen(toQt(text.color));
    const bool tooWide = room < -1;
    if (tooWide) {
        painter.save();
        painter.setClipRect(QRectF({}, bounds.size()), Qt::IntersectClip);
    }
    for (const QGlyphRun& glyphs : line.glyphs) {
        painter.drawGlyphRun({x, line.ascent}, glyphs);
    }
    if (tooWide) {
        painter.restore();
    }
    painter.setTransform(transform);
}

} // namespace rb
