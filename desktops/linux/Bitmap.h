#pragma once

#include "motion/Image.h"

#include <QImage>
#include <vector>

namespace rb {

// A picture in the form QPainter draws fastest.
class LinuxBitmap final : public Bitmap {
public:
    // Any thread.
    explicit LinuxBitmap(const QImage& image);
    // Made for that many points.
    LinuxBitmap(const QImage& image, Size pointSize);

    Size pixelSize() const override;
    Size pointSize() const override { return pointSize_; }
    const QImage& image() const { return image_; }
    // The smallest of the picture's halvings that is still at least as large as asked for, so that drawing it small
    // doesn't flicker. Halvings are made when first asked for. Main thread only.
    const QImage& halvedTo(const QSize& pixels) const;

private:
    QImage image_;
    Size pointSize_;
    mutable std::vector<QImage> halvings_;
};

} // namespace rb
