#include "desktops/macos/LayerProperties.h"

#include "desktops/macos/Bitmap.h"
#include "desktops/macos/Bridge.h"

#include <string>
#include <variant>

namespace rb {

namespace {

CALayerContentsGravity contentsGravity(ContentsGravity gravity) {
    switch (gravity) {
    case ContentsGravity::Resize:
        return kCAGravityResize;
    case ContentsGravity::ResizeAspect:
        return kCAGravityResizeAspect;
    case ContentsGravity::ResizeAspectFill:
        return kCAGravityResizeAspectFill;
    case ContentsGravity::Center:
        return kCAGravityCenter;
    }
    return kCAGravityResize;
}

CATextLayerAlignmentMode alignmentMode(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::Left:
        return kCAAlignmentLeft;
    case TextAlignment::Center:
        return kCAAlignmentCenter;
    case TextAlignment::Right:
        return kCAAlignmentRight;
    }
    return kCAAlignmentLeft;
}

CATextLayerTruncationMode truncationMode(Truncation truncation) {
    switch (truncation) {
    case Truncation::None:
        return kCATruncationNone;
    case Truncation::End:
        return kCATruncationEnd;
    case Truncation::Middle:
        return kCATruncationMiddle;
    }
    return kCATruncationNone;
}

// Turned about the anchor first, then scaled, then shifted.
CATransform3D transform3D(const LayerTransform& transform) {
    CATransform3D native = CATransform3DMakeTranslation(transform.translation.x, transform.translation.y, 0);
    native = CATransform3DScale(native, transform.scale, transform.scale, 1);
    return CATransform3DRotate(native, transform.rotation, 0, 0, 1);
}

id optionalColor(const std::optional<Color>& color) {
    return color ? cgColorObject(*color) : nil;
}

id nativeContents(const Image& image, double scale) {
    if (const auto* bitmap = std::get_if<std::shared_ptr<const Bitmap>>(&image)) {
        const auto* own = dynamic_cast<const MacBitmap*>(bitmap->get());
        return own != nullptr ? (__bridge id)own->image() : nil;
    }
    return [nsImage(image) layerContentsForContentsScale:scale];
}

void setContent(CAShapeLayer* native, const ShapeContent& shape) {
    CGPathRef path = createPath(shape.path);
    native.path = path;
    CGPathRelease(path);
    native.fillColor = (__bridge CGColorRef)optionalColor(shape.fillColor);
    native.strokeColor = (__bridge CGColorRef)optionalColor(shape.strokeColor);
    native.lineWidth = shape.lineWidth;
    native.lineCap = shape.lineCap == LineCap::Round ? kCALineCapRound : kCALineCapButt;
}

void setContent(CAGradientLayer* native, const GradientContent& gradient) {
    NSMutableArray* colors = [NSMutableArray array];
    for (const Color& color : gradient.colors) {
        [colors addObject:cgColorObject(color)];
    }
    native.colors = colors;
    NSMutableArray<NSNumber*>* locations = gradient.locations.empty() ? nil : [NSMutableArray array];
    for (const double location : gradient.locations) {
        [locations addObject:@(location)];
    }
    native.locations = locations;
    native.startPoint = cgPoint(gradient.startPoint);
    native.endPoint = cgPoint(gradient.endPoint);
}

void setContent(CATextLayer* native, const TextContent& text) {
    native.string = nsString(text.text);
    native.font = (__bridge CFTypeRef)nsFont(text.font);
    native.fontSize = text.font.size;
    native.foregroundColor = (__bridge CGColorRef)cgColorObject(text.color);
    native.alignmentMode = alignmentMode(text.alignment);
    native.truncationMode = truncationMode(text.truncation);
}

struct ToValue {
    id operator()(double value) const { return @(value); }
    id operator()(const Point& value) const { return [NSValue valueWithPoint:cgPoint(value)]; }
    id operator()(const Size& value) const { return [NSValue valueWithSize:cgSize(value)]; }
    id operator()(const Color& value) const { return cgColorObject(value); }
};

NSString* keyPath(const PropertyAnimation& part) {
    return nsString(std::string(keyPathName(part.keyPath)));
}

// `duration` is what the product asked for; a spring without one settles as Core Animation says.
CABasicAnimation* nativePart(const PropertyAnimation& part, std::optional<double> duration, double resolvedDuration) {
    CABasicAnimation* native = nil;
    if (const auto* spring = std::get_if<Spring>(&part.pacing)) {
        CASpringAnimation* springAnimation = [CASpringAnimation animationWithKeyPath:keyPath(part)];
        springAnimation.mass = spring->mass;
        springAnimation.stiffness = spring->stiffness;
        springAnimation.damping = spring->damping;
        springAnimation.initialVelocity = spring->initialVelocity;
        springAnimation.duration = duration ? *duration : springAnimation.settlingDuration;
        native = springAnimation;
    } else {
        const auto& curve = std::get<TimingCurve>(part.pacing);
        native = [CABasicAnimation animationWithKeyPath:keyPath(part)];
        native.timingFunction = [CAMediaTimingFunction
            functionWithControlPoints:static_cast<float>(
                                          curve.control1.x
                                          ):static_cast<float>(curve.control1.y
                                                               ):static_cast<float>(curve.control2.x
                                                                                    ):static_cast<float>(curve.control2
                                                                                                             .y)];
        native.duration = resolvedDuration;
    }
    native.fromValue = std::visit(ToValue{}, part.from);
    native.toValue = std::visit(ToValue{}, part.to);
    native.additive = part.additive ? YES : NO;
    return native;
}

void holdAtEnd(CAAnimation* native) {
    native.fillMode = kCAFillModeForwards;
    native.removedOnCompletion = NO;
}

CAAnimation* nativeGroup(const Animation& animation) {
    NSMutableArray<CAAnimation*>* parts = [NSMutableArray array];
    for (const PropertyAnimation& part : animation.parts) {
        CAAnimation* native = nativePart(part, animation.duration, animation.resolvedDuration());
        if (animation.holdsAtEnd) {
            holdAtEnd(native);
        }
        [parts addObject:native];
    }
    const TimingCurve& curve = animation.groupTiming;
    CAAnimationGroup* group = [CAAnimationGroup animation];
    group.animations = parts;
    group.duration = animation.resolvedDuration();
    group.timingFunction = [CAMediaTimingFunction
        functionWithControlPoints:static_cast<float>(
                                      curve.control1.x
                                      ):static_cast<float>(curve.control1.y
                                                           ):static_cast<float>(curve.control2.x
                                                                                ):static_cast<float>(curve.control2.y)];
    return group;
}

} // namespace

Class nativeClass(const LayerContent& content) {
    if (std::holds_alternative<ShapeContent>(content)) {
        return CAShapeLayer.class;
    }
    if (std::holds_alternative<GradientContent>(content)) {
        return CAGradientLayer.class;
    }
    if (std::holds_alternative<TextContent>(content)) {
        return CATextLayer.class;
    }
    return CALayer.class;
}

void setProperties(CALayer* native, const LayerModel& model) {
    native.bounds = cgRect(model.bounds);
    native.position = cgPoint(model.position);
    native.anchorPoint = cgPoint(model.anchorPoint);
    native.zPosition = model.zPosition;
    native.transform = transform3D(model.transform);
    native.opacity = static_cast<float>(model.opacity);
    native.hidden = model.hidden ? YES : NO;
    native.masksToBounds = model.masksToBounds ? YES : NO;
    native.backgroundColor = (__bridge CGColorRef)optionalColor(model.backgroundColor);
    native.cornerRadius = model.cornerRadius;
    native.cornerCurve = model.continuousCorners ? kCACornerCurveContinuous : kCACornerCurveCircular;
    native.borderWidth = model.borderWidth;
    native.borderColor = (__bridge CGColorRef)cgColorObject(model.borderColor);
    native.shadowColor = (__bridge CGColorRef)cgColorObject(model.shadowColor);
    native.shadowOpacity = static_cast<float>(model.shadowOpacity);
    native.shadowRadius = model.shadowRadius;
    native.shadowOffset = cgSize(model.shadowOffset);
    CGPathRef shadowPath = model.shadowPath ? createPath(*model.shadowPath) : nullptr;
    native.shadowPath = shadowPath;
    CGPathRelease(shadowPath);
    native.contentsScale = model.contentsScale;
    native.contentsGravity = contentsGravity(model.contentsGravity);
    native.contents = nativeContents(model.contents, model.contentsScale);
    if (const auto* shape = std::get_if<ShapeContent>(&model.content)) {
        setContent((CAShapeLayer*)native, *shape);
    } else if (const auto* gradient = std::get_if<GradientContent>(&model.content)) {
        setContent((CAGradientLayer*)native, *gradient);
    } else if (const auto* text = std::get_if<TextContent>(&model.content)) {
        setContent((CATextLayer*)native, *text);
    }
}

CAAnimation* nativeAnimation(const Animation& animation, std::optional<double> begin, CALayer* native) {
    const bool single = animation.parts.size() == 1 && animation.groupTiming == TimingCurve::linear();
    CAAnimation* result = single ? nativePart(animation.parts.front(), animation.duration, animation.resolvedDuration())
                                 : nativeGroup(animation);
    if (begin) {
        result.beginTime = [native convertTime:*begin fromLayer:nil];
    }
    if (animation.holdsAtEnd) {
        holdAtEnd(result);
    }
    return result;
}

} // namespace rb
