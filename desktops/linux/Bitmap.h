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

    Size pixelSize() const override;
    const QImage& image() const { return image_; }
    // The smallest of the picture's halvings that is still at least as large as asked for, so that drawing it small
    // doesn't flicker. Halvings are made when first asked for. Main thread only.
    const QImage& halvedTo(const QSize& pixels) const;

private:
    QImage image_;
    mutable std::vector<QImage> halvings_;
};

} // namespace rb
