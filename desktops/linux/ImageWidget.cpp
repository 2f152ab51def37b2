#include "desktops/linux/ImageWidget.h"

#include "desktops/linux/Theme.h"

#include <QPainter>

#include <algorithm>
#include <utility>

namespace rb {

namespace {

constexpr double usualSymbolSize = 13;

} // namespace

ImageWidget::ImageWidget(QWidget& parent, ContentSurroundings& surroundings)
    : QWidget(&parent)
    , surroundings_(surroundings) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

bool ImageWidget::show(ViewContent& content) {
    auto* image = std::get_if<ImageView>(&content);
    if (!image) {
        return false;
    }
    image_ = std::move(*image);
    const auto* symbol = std::get_if<Symbol>(&image_.image);
    setAccessibleName(symbol ? QString::fromStdString(symbol->accessibilityDescription) : QString());
    update();
    return true;
}

QSizeF ImageWidget::contentSize(double /*availableWidth*/) const {
    if (image_.size.width > 0 && image_.size.height > 0) {
        return {image_.size.width, image_.size.height};
    }
    return surroundings_.pictures().size(image_.image, usualSymbolSize);
}

void ImageWidget::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    // A symbol without a size of its own fills the area that it was given.
    const double side = std::min(width(), height());
    const double place = image_.size.width > 0 ? side * 0.8 : usualSymbolSize;
    surroundings_.pictures().draw(painter, image_.image, rect(), place, surroundings_.theme().label);
}

} // namespace rb
