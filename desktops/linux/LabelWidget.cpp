#include "desktops/linux/LabelWidget.h"

#include "desktops/linux/TextMeter.h"
#include "desktops/linux/Theme.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>
#include <utility>

namespace rb {

namespace {

Qt::Alignment alignmentOf(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::Left:
        return Qt::AlignLeft;
    case TextAlignment::Center:
        return Qt::AlignHCenter;
    case TextAlignment::Right:
        return Qt::AlignRight;
    }
    return Qt::AlignLeft;
}

// Words that don't fit into a line may break anywhere.
QString breakable(const QString& text, const QFontMetricsF& metrics, double width) {
    constexpr char16_t zeroWidthSpace = 0x200B;
    QString result;
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = start;
        while (end < text.size() && text[end].isSpace() == text[start].isSpace()) {
            ++end;
        }
        const QString word = text.mid(start, end - start);
        if (text[start].isSpace() || metrics.horizontalAdvance(word) <= width) {
            result += word;
        } else {
            for (const QChar c : word) {
                result += c;
                if (!c.isHighSurrogate()) {
                    result += QChar(zeroWidthSpace);
                }
            }
        }
        start = end;
    }
    return result;
}

} // namespace

const QColor& colorOf(TextColor color, const Theme& theme) {
    switch (color) {
    case TextColor::Label:
        return theme.label;
    case TextColor::SecondaryLabel:
        return theme.secondaryLabel;
    case TextColor::TertiaryLabel:
        return theme.tertiaryLabel;
    case TextColor::SystemGreen:
        return theme.green;
    case TextColor::SystemBlue:
        return theme.blue;
    }
    return theme.label;
}

LabelWidget::LabelWidget(QWidget& parent, ContentSurroundings& surroundings)
    : QLabel(&parent)
    , surroundings_(surroundings) {
    setTextFormat(Qt::PlainText);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

bool LabelWidget::show(ViewContent& content) {
    auto* label = std::get_if<LabelView>(&content);
    if (!label) {
        return false;
    }
    label_ = std::move(*label);
    setFont(interfaceFont(label_.font));
    setAlignment(alignmentOf(label_.alignment) | (label_.wraps ? Qt::AlignTop : Qt::AlignVCenter));
    setWordWrap(label_.wraps);
    setText(QString::fromStdString(label_.text));
    themeChanged();
    return true;
}

QSizeF LabelWidget::contentSize(double availableWidth) const {
    const QFontMetricsF metrics(font());
    const QString text = QString::fromStdString(label_.text);
    const QRectF natural = metrics.boundingRect(QRectF(0, 0, 1e6, 1e6), Qt::AlignLeft, text);
    // Whole points, for a line that is a fraction too narrow would wrap or lose its end.
    const double width = std::ceil(natural.width()) + 1;
    if (!label_.wraps || width <= availableWidth || availableWidth <= 0) {
        return {width, std::ceil(natural.height())};
    }
    const double whole = std::floor(availableWidth);
    const QRectF wrapped = metrics.boundingRect(QRectF(0, 0, whole, 1e6), Qt::AlignLeft | Qt::TextWordWrap,
                                                breakable(text, metrics, whole));
    return {whole, std::ceil(wrapped.height())};
}

void LabelWidget::layOut() {
    const QString whole = QString::fromStdString(label_.text);
    const QString shown = label_.wraps ? breakable(whole, QFontMetricsF(font()), width())
                                       : fontMetrics().elidedText(whole, Qt::ElideMiddle, width());
    if (text() != shown) {
        setText(shown);
    }
    setAccessibleName(shown == whole ? QString() : whole);
}

void LabelWidget::themeChanged() {
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, colorOf(label_.color, surroundings_.theme()));
    setPalette(colors);
}

} // namespace rb
