#include "motion/Layer.h"

namespace rb {

Rect LayerModel::frame() const {
    return {position.x - anchorPoint.x * bounds.width, position.y - anchorPoint.y * bounds.height, bounds.width,
            bounds.height};
}

void LayerModel::setFrame(const Rect& frame) {
    bounds.width = frame.width;
    bounds.height = frame.height;
    position = {frame.x + anchorPoint.x * frame.width, frame.y + anchorPoint.y * frame.height};
}

LayerValue LayerModel::value(KeyPath keyPath) const {
    const auto* shape = std::get_if<ShapeContent>(&content);
    switch (keyPath) {
    case KeyPath::Position:
        return position;
    case KeyPath::PositionX:
        return position.x;
    case KeyPath::PositionY:
        return position.y;
    case KeyPath::TranslationX:
        return transform.translation.x;
    case KeyPath::TranslationY:
        return transform.translation.y;
    case KeyPath::RotationZ:
        return transform.rotation;
    case KeyPath::Scale:
        return transform.scale;
    case KeyPath::Opacity:
        return opacity;
    case KeyPath::BackgroundColor:
        return backgroundColor.value_or(Color::clear());
    case KeyPath::BorderColor:
        return borderColor;
    case KeyPath::BorderWidth:
        return borderWidth;
    case KeyPath::ShadowOpacity:
        return shadowOpacity;
    case KeyPath::ShadowRadius:
        return shadowRadius;
    case KeyPath::ShadowOffset:
        return shadowOffset;
    case KeyPath::StrokeColor:
        return shape ? shape->strokeColor.value_or(Color::clear()) : Color::clear();
    case KeyPath::LineWidth:
        return shape ? shape->lineWidth : 0.0;
    }
    return 0.0;
}

void LayerModel::setValue(KeyPath keyPath, const LayerValue& value) {
    auto* shape = std::get_if<ShapeContent>(&content);
    switch (keyPath) {
    case KeyPath::Position:
        position = std::get<Point>(value);
        break;
    case KeyPath::PositionX:
        position.x = std::get<double>(value);
        break;
    case KeyPath::PositionY:
        position.y = std::get<double>(value);
        break;
    case KeyPath::TranslationX:
        transform.translation.x = std::get<double>(value);
        break;
    case KeyPath::TranslationY:
        transform.translation.y = std::get<double>(value);
        break;
    case KeyPath::RotationZ:
        transform.rotation = std::get<double>(value);
        break;
    case KeyPath::Scale:
        transform.scale = std::get<double>(value);
        break;
    case KeyPath::Opacity:
        opacity = std::get<double>(value);
        break;
    case KeyPath::BackgroundColor:
        backgroundColor = std::get<Color>(value);
        break;
    case KeyPath::BorderColor:
        borderColor = std::get<Color>(value);
        break;
    case KeyPath::BorderWidth:
        borderWidth = std::get<double>(value);
        break;
    case KeyPath::ShadowOpacity:
        shadowOpacity = std::get<double>(value);
        break;
    case KeyPath::ShadowRadius:
        shadowRadius = std::get<double>(value);
        break;
    case KeyPath::ShadowOffset:
        shadowOffset = std::get<Size>(value);
        break;
    case KeyPath::StrokeColor:
        if (shape) {
            shape->strokeColor = std::get<Color>(value);
        }
        break;
    case KeyPath::LineWidth:
        if (shape) {
            shape->lineWidth = std::get<double>(value);
        }
        break;
    }
}

} // namespace rb
