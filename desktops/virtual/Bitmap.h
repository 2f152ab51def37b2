#pragma once

#include "motion/Image.h"

#include <string>
#include <utility>

namespace rb {

// A picture without pixels: what it shows and how large it is.
class VirtualBitmap final : public Bitmap {
public:
    VirtualBitmap(std::string content, Size pixelSize)
        : VirtualBitmap(std::move(content), pixelSize, pixelSize) {}
    VirtualBitmap(std::string content, Size pixelSize, Size pointSize)
        : content_(std::move(content))
        , pixelSize_(pixelSize)
        , pointSize_(pointSize) {}

    Size pixelSize() const override { return pixelSize_; }
    Size pointSize() const override { return pointSize_; }
    const std::string& content() const { return content_; }

private:
    std::string content_;
    Size pixelSize_;
    Size pointSize_;
};

} // namespace rb
