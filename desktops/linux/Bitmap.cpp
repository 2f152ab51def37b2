#include "desktops/linux/Bitmap.h"

namespace rb {

LinuxBitmap::LinuxBitmap(const QImage& image)
    : LinuxBitmap(image, {static_cast<double>(image.width()), static_cast<double>(image.height())}) {}

LinuxBitmap::LinuxBitmap(const QImage& image, Size pointSize)
    : image_(image.convertToFormat(QImage::Format_ARGB32_Premultiplied))
    , pointSize_(pointSize) {}

Size LinuxBitmap::pixelSize() const {
    return {static_cast<double>(image_.width()), static_cast<double>(image_.height())};
}

const QImage& LinuxBitmap::halvedTo(const QSize& pixels) const {
    const QImage* best = &image_;
    for (std::size_t step = 0;; ++step) {
        const QSize half = best->size() / 2;
        if (half.isEmpty() || half.width() < pixels.width() || half.height() < pixels.height()) {
            return *best;
        }
        if (step == halvings_.size()) {
            halvings_.push_back(best->scaled(half, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        }
        best = &halvings_[step];
    }
}

} // namespace rb
