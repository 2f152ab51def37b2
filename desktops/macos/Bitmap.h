#pragma once

#include "motion/Image.h"

#import <AppKit/AppKit.h>
#import <CoreGraphics/CoreGraphics.h>

namespace rb {

// Decoded pixels as a CGImage.
class MacBitmap final : public Bitmap {
public:
    // Keeps the image alive.
    explicit MacBitmap(CGImageRef image)
        : image_(CGImageRetain(image)) {}
    ~MacBitmap() override { CGImageRelease(image_); }
    MacBitmap(const MacBitmap&) = delete;
    MacBitmap& operator=(const MacBitmap&) = delete;

    Size pixelSize() const override {
        return {static_cast<double>(CGImageGetWidth(image_)), static_cast<double>(CGImageGetHeight(image_))};
    }
    CGImageRef image() const { return image_; }

private:
    CGImageRef image_;
};

// A picture of the system's own that knows its size in points and draws itself when it is shown.
class MacPicture final : public Bitmap {
public:
    explicit MacPicture(NSImage* image)
        : image_(image) {}

    Size pixelSize() const override { return {image_.size.width, image_.size.height}; }
    NSImage* image() const { return image_; }

private:
    NSImage* image_;
};

} // namespace rb
