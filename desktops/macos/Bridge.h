#pragma once

#include "motion/Color.h"
#include "motion/Font.h"
#include "motion/Geometry.h"
#include "motion/Image.h"
#include "motion/Path.h"

#import <AppKit/AppKit.h>

#include <optional>
#include <string>

// Values of the seam as the system's objects and back. Nothing here has a state; usable on any thread where AppKit's
// own classes are.
namespace rb {

// Never nil; malformed UTF-8 gives an empty text.
NSString* nsString(const std::string& text);
// Empty for nil.
std::string utf8String(NSString* text);

// The same for texts that may hold any character: zeros stay, and half a character becomes a replacement.
NSString* textFrom(const std::string& text);
std::string wholeText(NSString* text);

CGPoint cgPoint(const Point& point);
CGSize cgSize(const Size& size);
CGRect cgRect(const Rect& rect);
Point pointFrom(CGPoint point);
Rect rectFrom(CGRect rect);

NSColor* nsColor(const Color& color);
// The components in sRGB; nothing for a colour that has none, such as a pattern.
std::optional<Color> colorFrom(NSColor* color);
// A CGColor as an object, so that ARC keeps it; layers and arrays take it as it is.
id cgColorObject(const Color& color);

NSFont* nsFont(const Font& font);
NSFontWeight nsFontWeight(FontWeight weight);

// Nil for no image and for a symbol that the system doesn't know.
NSImage* nsImage(const Image& image);

// The caller releases it (CGPathRelease). Null when the system has no memory for one.
CGPathRef createPath(const Path& path);

} // namespace rb
