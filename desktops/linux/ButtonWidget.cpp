#include "desktops/linux/ButtonWidget.h"

#include "desktops/linux/Style.h"

#include <utility>

namespace rb {

namespace {

constexpr double symbolSize = 13;

} // namespace

ButtonWidget::ButtonWidget(QWidget& parent, ContentSurroundings& surroundings)
    : QPushButton(&parent)
    , surroundings_(surroundings) {
    setAutoDefault(false);
    setFocusPolicy(Qt::TabFocus);
    connect(this, &QPushButton::clicked, this, [this] {
        // By copy: the action may render the content anew.
        if (const auto action = button_.action) {
            action();
        }
    });
}

bool ButtonWidget::show(ViewContent& content) {
    auto* button = std::get_if<ButtonView>(&content);
    if (!button) {
        return false;
    }
    button_ = std::move(*button);
    setText(QString::fromStdString(button_.title).replace(QLatin1Char('&'), QStringLiteral("&&")));
    setEnabled(button_.enabled);
    setDefault(isDefault());
    themeChanged();
    return true;
}

void ButtonWidget::themeChanged() {
    const QSizeF size = surroundings_.pictures().size(button_.image, symbolSize);
    if (size.isEmpty()) {
        setIcon({});
        return;
    }
    const Theme& theme = surroundings_.theme();
    const QColor& color = isDefault() ? theme.onAccent() : theme.label;
    QIcon icon;
    for (const double scale : {1.0, 2.0}) {
        icon.addPixmap(surroundings_.pictures().pixmap(button_.image, size, symbolSize, color, scale));
        icon.addPixmap(surroundings_.pictures().pixmap(button_.image, size, symbolSize, theme.tertiaryLabel, scale),
                       QIcon::Disabled);
    }
    setIcon(icon);
    setIconSize(size.toSize());
}

QSizeF ButtonWidget::contentSize(double /*availableWidth*/) const {
    const QMarginsF ring = outset();
    return QSizeF(sizeHint()).shrunkBy(ring);
}

QMarginsF ButtonWidget::outset() const {
    constexpr double ring = LinuxStyle::focusRingWidth;
    return {ring, ring, ring, ring};
}

} // namespace rb
