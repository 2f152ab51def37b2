#pragma once

#include "motion/Image.h"

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

} // namespace rb
