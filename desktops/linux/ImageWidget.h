#pragma once

#include "desktops/linux/RealizedView.h"

#include <QWidget>

namespace rb {

// A symbol or a picture.
class ImageWidget final : public QWidget, public RealizedView {
public:
    ImageWidget(QWidget& parent, ContentSurroundings& surroundings);

    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override;
    QSizeF contentSize(double availableWidth) const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ContentSurroundings& surroundings_;
    ImageView image_;
};

} // namespace rb
