#include "desktops/macos/Bridge.h"

#include "desktops/macos/Bitmap.h"

#import <CoreGraphics/CoreGraphics.h>

namespace rb {

namespace {

NSImage* symbolImage(const Symbol& symbol) {
    NSString* description = symbol.accessibilityDescription.empty() ? nil : nsString(symbol.accessibilityDescription);
    NSImage* image = [NSImage imageWithSystemSymbolName:nsString(symbol.name) accessibilityDescription:description];
    if (symbol.pointSize > 0) {
        image = [image imageWithSymbolConfiguration:[NSImageSymbolConfiguration
                                                        configurationWithPointSize:symbol.pointSize
                                                                            weight:nsFontWeight(symbol.weight)]];
    }
    if (symbol.tint) {
        // Applied onto the image's own configuration, so size and weight stay.
        image = [image
            imageWithSymbolConfiguration:[image.symbolConfiguration
                                             configurationByApplyingConfiguration:[NSImageSymbolConfiguration
                                                                                      configurationWithPaletteColors:@[
                                                                                          nsColor(*symbol.tint)
                                                                                      ]]]];
    }
    return image;
}

} // namespace

NSString* nsString(const std::string& text) {
    NSString* native = [NSString stringWithUTF8String:text.c_str()];
    return native != nil ? native : @"";
}

std::string utf8String(NSString* text) {
    const char* bytes = text.UTF8String;
    return bytes != nullptr ? std::string(bytes) : std::string();
}

NSString* textFrom(const std::string& text) {
    NSString* native = [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
    return native != nil ? native : @"";
}

std::string wholeText(NSString* text) {
    NSData* data = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    return data != nil ? std::string(static_cast<const char*>(data.bytes), data.length) : std::string();
}

CGPoint cgPoint(const Point& point) {
    return CGPointMake(point.x, point.y);
}

CGSize cgSize(const Size& size) {
    return CGSizeMake(size.width, size.height);
}

CGRect cgRect(const Rect& rect) {
    return CGRectMake(rect.x, rect.y, rect.width, rect.height);
}

Point pointFrom(CGPoint point) {
    return {point.x, point.y};
}

Rect rectFrom(CGRect rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

NSColor* nsColor(const Color& color) {
    return [NSColor colorWithSRGBRed:color.red green:color.green blue:color.blue alpha:color.alpha];
}

std::optional<Color> colorFrom(NSColor* color) {
    NSColor* converted = [color colorUsingColorSpace:NSColorSpace.sRGBColorSpace];
    if (converted == nil) {
        return std::nullopt;
    }
    CGFloat red = 0;
    CGFloat green = 0;
    CGFloat blue = 0;
    CGFloat alpha = 0;
    [converted getRed:&red green:&green blue:&blue alpha:&alpha];
    return Color{red, green, blue, alpha};
}

id cgColorObject(const Color& color) {
    return (__bridge_transfer id)CGColorCreateSRGB(color.red, color.green, color.blue, color.alpha);
}

NSFontWeight nsFontWeight(FontWeight weight) {
    switch (weight) {
    case FontWeight::Regular:
        return NSFontWeightRegular;
    case FontWeight::Medium:
        return NSFontWeightMedium;
    case FontWeight::Semibold:
        return NSFontWeightSemibold;
    case FontWeight::Bold:
        return NSFontWeightBold;
    }
    return NSFontWeightRegular;
}

NSFont* nsFont(const Font& font) {
    return [NSFont systemFontOfSize:font.size weight:nsFontWeight(font.weight)];
}

NSImage* nsImage(const Image& image) {
    if (const auto* symbol = std::get_if<Symbol>(&image)) {
        return symbolImage(*symbol);
    }
    if (const auto* bitmap = std::get_if<std::shared_ptr<const Bitmap>>(&image)) {
        if (const auto* picture = dynamic_cast<const MacPicture*>(bitmap->get())) {
            return picture->image();
        }
        const auto* own = dynamic_cast<const MacBitmap*>(bitmap->get());
        // A size of zero takes over the picture's own in pixels.
        return own != nullptr ? [[NSImage alloc] initWithCGImage:own->image() size:NSZeroSize] : nil;
    }
    return nil;
}

CGPathRef createPath(const Path& path) {
    CGMutablePathRef native = CGPathCreateMutable();
    if (native == nullptr) {
        return nullptr;
    }
    for (const Path::Segment& segment : path.segments()) {
        switch (segment.verb) {
        case Path::Verb::Move:
            CGPathMoveToPoint(native, nullptr, segment.end.x, segment.end.y);
            break;
        case Path::Verb::Line:
            CGPathAddLineToPoint(native, nullptr, segment.end.x, segment.end.y);
            break;
        case Path::Verb::Quad:
            CGPathAddQuadCurveToPoint(native, nullptr, segment.control1.x, segment.control1.y, segment.end.x,
                                      segment.end.y);
            break;
        case Path::Verb::Cubic:
            CGPathAddCurveToPoint(native, nullptr, segment.control1.x, segment.control1.y, segment.control2.x,
                                  segment.control2.y, segment.end.x, segment.end.y);
            break;
        case Path::Verb::Close:
            CGPathCloseSubpath(native);
            break;
        }
    }
    return native;
}

} // namespace rb
