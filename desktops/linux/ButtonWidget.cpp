#include "desktops/linux/ButtonWidget.h"

#include "desktops/linux/LabelWidget.h"
#include "desktops/linux/Style.h"

#include <QPainter>
#include <QStyleOptionButton>

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
    setFlat(!button_.bordered);
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
    const QColor color = isDefault() ? theme.onAccent() : colorOf(button_.contentColor, theme);
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

void ButtonWidget::paintEvent(QPaintEvent* event) {
    if (button_.bordered) {
        QPushButton::paintEvent(event);
        return;
    }
    paintPlain();
}

// Picture and title from the left edge on, and a ring around them for the keyboard.
void ButtonWidget::paintPlain() {
    constexpr int margin = 12;
    constexpr int gap = 9;
    const Theme& theme = surroundings_.theme();
    QColor color = isEnabled() ? colorOf(button_.contentColor, theme) : theme.tertiaryLabel;
    if (isDown()) {
        color.setAlphaF(color.alphaF() * 0.6F);
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF body = QRectF(rect()).marginsRemoved(outset());
    QStyleOptionButton option;
    initStyleOption(&option);
    if ((option.state & QStyle::State_HasFocus) != 0 && (option.state & QStyle::State_KeyboardFocusChange) != 0) {
        QColor ring = theme.accent;
        ring.setAlphaF(0.45F);
        painter.setPen(QPen(ring, LinuxStyle::focusRingWidth));
        painter.drawRoundedRect(body, 10, 10);
    }
    QRectF left = body.adjusted(margin, 0, -margin, 0);
    const QSizeF picture = surroundings_.pictures().size(button_.image, symbolSize);
    if (!picture.isEmpty()) {
        surroundings_.pictures().draw(
            painter, button_.image,
            QRectF(left.left(), body.center().y() - picture.height() / 2, picture.width(), picture.height()),
            symbolSize, color);
        left.setLeft(left.left() + picture.width() + gap);
    }
    painter.setPen(color);
    painter.drawText(left, Qt::AlignLeft | Qt::AlignVCenter, QString::fromStdString(button_.title));
}

} // namespace rb
