#include "desktops/linux/LayerGeometry.h"

#include "desktops/linux/Symbols.h"

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

QPointF toQt(Point point) {
    return {point.x, point.y};
}

// One corner from `from` to `to` around `corner`; the unit vectors lead from the corner back to them.
struct Corner {
    QPointF corner;
    QPointF incoming;
    QPointF outgoing;
};

} // namespace

ShownModel::ShownModel(const Layer& layer, double mediaTime)
    : still_(layer.model()) {
    if (layer.hasAnimations()) {
        moving_ = layer.presentation(mediaTime);
    }
}

QRectF toQt(const Rect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

QPainterPath toQt(const Path& path) {
    QPainterPath result;
    result.reserve(static_cast<int>(path.segments().size()) * 3);
    for (const Path::Segment& segment : path.segments()) {
        switch (segment.verb) {
        case Path::Verb::Move:
            result.moveTo(toQt(segment.end));
            break;
        case Path::Verb::Line:
            result.lineTo(toQt(segment.end));
            break;
        case Path::Verb::Quad:
            result.quadTo(toQt(segment.control1), toQt(segment.end));
            break;
        case Path::Verb::Cubic:
            result.cubicTo(toQt(segment.control1), toQt(segment.control2), toQt(segment.end));
            break;
        case Path::Verb::Close:
            result.closeSubpath();
            break;
        }
    }
    return result;
}

QTransform flipped(const QRectF& canvasRect) {
    return {1, 0, 0, -1, canvasRect.left(), canvasRect.bottom()};
}

QTransform transformOf(const LayerModel& model, const QTransform& superlayer) {
    QTransform result = superlayer;
    result.translate(model.position.x + model.transform.translation.x,
                     model.position.y + model.transform.translation.y);
    if (model.transform.rotation != 0) {
        result.rotateRadians(model.transform.rotation);
    }
    if (model.transform.scale != 1) {
        result.scale(model.transform.scale, model.transform.scale);
    }
    result.translate(-model.bounds.x - model.anchorPoint.x * model.bounds.width,
                     -model.bounds.y - model.anchorPoint.y * model.bounds.height);
    return result;
}

QPainterPath outlineOf(const QRectF& rect, double radius, bool continuous) {
    QPainterPath path;
    const double half = std::min(rect.width(), rect.height()) / 2;
    const double r = std::clamp(radius, 0.0, std::max(0.0, half));
    if (r <= 0) {
        path.addRect(rect);
        return path;
    }
    // A corner is one cubic that starts `reach` before the corner and whose control points lie `control` before it.
    // Its middle stays on the circle: reach + 3 control = 8 r (1 − √½). The circle's own reach is r.
    const double reach = continuous ? std::min(1.3 * r, half) : r;
    const double control = (8 * r * (1 - std::sqrt(0.5)) - reach) / 3;
    const Corner corners[] = {{rect.topRight(), {-1, 0}, {0, 1}},
                              {rect.bottomRight(), {0, -1}, {-1, 0}},
                              {rect.bottomLeft(), {1, 0}, {0, -1}},
                              {rect.topLeft(), {0, 1}, {1, 0}}};
    path.reserve(18);
    path.moveTo(rect.topLeft() + reach * QPointF(1, 0));
    for (const Corner& c : corners) {
        path.lineTo(c.corner + reach * c.incoming);
        path.cubicTo(c.corner + control * c.incoming, c.corner + control * c.outgoing, c.corner + reach * c.outgoing);
    }
    path.closeSubpath();
    return path;
}

bool movesAsAWhole(const Layer& layer) {
    const auto keys = layer.animationKeys();
    return std::all_of(keys.begin(), keys.end(), [&layer](const std::string& key) {
        const auto& parts = layer.animation(key)->parts;
        return std::all_of(parts.begin(), parts.end(), [](const PropertyAnimation& part) {
            return part.keyPath <= KeyPath::RotationZ || part.keyPath == KeyPath::Opacity;
        });
    });
}

bool isStillInside(const Layer& layer) {
    const auto& sublayers = layer.sublayers();
    return (!layer.mask() || (!layer.mask()->hasAnimations() && isStillInside(*layer.mask()))) &&
           std::all_of(sublayers.begin(), sublayers.end(),
                       [](const auto& sublayer) { return !sublayer->hasAnimations() && isStillInside(*sublayer); });
}

QRectF contentsRect(const LayerModel& model, const QSizeF& size) {
    const QRectF bounds = toQt(model.bounds);
    if (model.contentsGravity == ContentsGravity::Resize || size.isEmpty()) {
        return bounds;
    }
    double scale = 1;
    const double horizontal = bounds.width() / size.width();
    const double vertical = bounds.height() / size.height();
    if (model.contentsGravity == ContentsGravity::ResizeAspect) {
        scale = std::min(horizontal, vertical);
    } else if (model.contentsGravity == ContentsGravity::ResizeAspectFill) {
        scale = std::max(horizontal, vertical);
    }
    QRectF result({}, size * scale);
    result.moveCenter(bounds.center());
    return result;
}

QSizeF contentsSize(const LayerModel& model) {
    if (const auto* symbol = std::get_if<Symbol>(&model.contents)) {
        const double side = symbol->pointSize > 0 ? Symbols::sideFor(symbol->pointSize)
                                                  : std::min(model.bounds.width, model.bounds.height);
        return {side, side};
    }
    if (const auto* bitmap = std::get_if<std::shared_ptr<const Bitmap>>(&model.contents); bitmap && *bitmap) {
        const Size pixels = (*bitmap)->pixelSize();
        return QSizeF(pixels.width, pixels.height) / std::max(model.contentsScale, 0.1);
    }
    return {};
}

double shadowReach(double radius) {
    // Where even a black shadow's last shade is less than one of 255 at the opacities in use.
    return 2.5 * radius;
}

QRectF ownPaintedRect(const LayerModel& model, const QTransform& transform) {
    QRectF covered;
    QRectF thrower;
    const QRectF bounds = toQt(model.bounds);
    if (model.backgroundColor || model.borderWidth > 0 || std::holds_alternative<GradientContent>(model.content) ||
        std::holds_alternative<TextContent>(model.content)) {
        covered = bounds;
    }
    if (const auto* shape = std::get_if<ShapeContent>(&model.content)) {
        QRectF drawn = toQt(shape->path).boundingRect();
        if (shape->strokeColor) {
            // A mitred join of ours reaches at most twice the line width.
            drawn.adjust(-shape->lineWidth, -shape->lineWidth, shape->lineWidth, shape->lineWidth);
        }
        covered |= drawn;
    }
    if (const QSizeF size = contentsSize(model); !size.isEmpty()) {
        const QRectF drawn = contentsRect(model, size);
        covered |= model.masksToBounds ? drawn & bounds : drawn;
    }
    if (model.shadowOpacity > 0 && !model.masksToBounds) {
        thrower = model.shadowPath ? toQt(*model.shadowPath).boundingRect() : covered;
        if (!thrower.isEmpty()) {
            const double reach = shadowReach(model.shadowRadius) + 1;
            covered |= thrower.translated(model.shadowOffset.width, model.shadowOffset.height)
                           .adjusted(-reach, -reach, reach, reach);
        }
    }
    return covered.isEmpty() ? QRectF() : transform.mapRect(covered);
}

QRectF paintedRect(const Layer& layer, double mediaTime, const QTransform& superlayer) {
    const ShownModel model(layer, mediaTime);
    if (model->hidden || model->opacity <= 0) {
        return {};
    }
    const QTransform transform = transformOf(*model, superlayer);
    QRectF rect = ownPaintedRect(*model, transform);
    QRectF below;
    for (const auto& sublayer : layer.sublayers()) {
        below |= paintedRect(*sublayer, mediaTime, transform);
    }
    if (model->masksToBounds) {
        below &= transform.mapRect(toQt(model->bounds));
    }
    rect |= below;
    if (layer.mask()) {
        rect &= paintedRect(*layer.mask(), mediaTime, transform);
    }
    return rect;
}

} // namespace rb
