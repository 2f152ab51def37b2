#pragma once

#include "desktops/linux/RealizedView.h"

#include <QColor>
#include <QLabel>

namespace rb {

// The colour of texts of that kind.
const QColor& colorOf(TextColor color, const Theme& theme);

// A text, on one line (shortened in the middle where it doesn't fit) or wrapped.
class LabelWidget final : public QLabel, public RealizedView {
public:
    LabelWidget(QWidget& parent, ContentSurroundings& surroundings);

    QWidget& widget() override { return *this; }
    bool show(ViewContent& content) override;
    QSizeF contentSize(double availableWidth) const override;
    void layOut() override;
    void themeChanged() override;

private:
    ContentSurroundings& surroundings_;
    LabelView label_;
};

} // namespace rb
