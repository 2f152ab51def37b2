#include "desktops/linux/MenuRow.h"

#include "desktops/linux/ImportedMenu.h"
#include "desktops/linux/KeyEquivalent.h"
#include "desktops/linux/MenuAction.h"
#include "desktops/linux/MenuWidget.h"
#include "desktops/linux/Pictures.h"

#include <QFontMetrics>
#include <QPainter>
#include <QStyleOptionMenuItem>

#include <algorithm>
#include <cmath>

namespace rb {

namespace {

constexpr int rowHeight = 26;
constexpr int separatorHeight = 11;
constexpr int side = 9; // from the highlight's edge to what is in it
constexpr int imageGap = 8;
constexpr int indentation = 11;
constexpr int keyGap = 28;
constexpr int arrowWidth = 8;
constexpr double symbolSize = 14;
constexpr int symbolColumn = 18;
constexpr int largestTitle = 560;
constexpr double highlightRadius = 5;
constexpr int subtitleGap = 1;
constexpr int breath = 5; // above and below what is taller than a plain row

QFont subtitleFont(const QFont& font) {
    QFont smaller = font;
    smaller.setPixelSize(11);
    return smaller;
}

QSize pictureOf(const MenuItem& item, const Pictures& pictures) {
    const QSizeF size = pictures.size(item.image, symbolSize);
    return {static_cast<int>(std::ceil(size.width())), static_cast<int>(std::ceil(size.height()))};
}

// A check mark in a box of 10 × 10.
void drawCheck(QPainter& painter, const QPointF& centre, const QColor& color) {
    painter.setPen(QPen(color, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF points[] = {centre + QPointF(-4, 0.3), centre + QPointF(-1.3, 3.2), centre + QPointF(4, -3.6)};
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(points, 3);
}

// Of those that exclude one another, the one that is on.
void drawBullet(QPainter& painter, const QPointF& centre, const QColor& color) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(centre, 3, 3);
}

void drawDash(QPainter& painter, const QPointF& centre, const QColor& color) {
    painter.setPen(QPen(color, 1.8, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(centre - QPointF(4, 0), centre + QPointF(4, 0));
}

void drawArrow(QPainter& painter, const QPointF& tip, const QColor& color) {
    painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF points[] = {tip + QPointF(-3.8, -4), tip, tip + QPointF(-3.8, 4)};
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(points, 3);
}

} // namespace

int MenuRow::imageWidth(const MenuItem& item, const Pictures& pictures) {
    const int width = pictureOf(item, pictures).width();
    if (width == 0) {
        return 0;
    }
    // Symbols differ in width; a column of their own aligns their centres.
    return std::holds_alternative<Symbol>(item.image) ? std::max(width, symbolColumn) : width;
}

int MenuRow::textLeft(const MenuItem& item) const {
    const MenuWidget::Columns& columns = action_.menuWidget().columns();
    const int image = columns.image > 0 ? columns.image + imageGap : 0;
    return side + columns.check + image + indentation * item.indentationLevel;
}

QSize MenuRow::sizeOf(const MenuItem& item, const QFont& font) const {
    const QFontMetrics metrics(font);
    int width = std::min(metrics.horizontalAdvance(QString::fromStdString(item.title)), largestTitle);
    int height = metrics.height();
    if (!item.subtitle.empty()) {
        const QFontMetrics small(subtitleFont(font));
        width = std::max(width, std::min(small.horizontalAdvance(QString::fromStdString(item.subtitle)), largestTitle));
        height += subtitleGap + small.height();
    }
    const QString key = keyEquivalentText(item);
    int trailing = 0;
    if (item.submenu) {
        trailing = keyGap + arrowWidth;
    } else if (!key.isEmpty()) {
        trailing = keyGap + metrics.horizontalAdvance(key);
    }
    const int contents =
        std::max(item.subtitle.empty() ? 0 : height, pictureOf(item, action_.menuWidget().pictures()).height());
    return {textLeft(item) + width + trailing + side, std::max(rowHeight, contents + 2 * breath)};
}

QSize MenuRow::size(const QFont& font) const {
    if (action_.isSeparator()) {
        return {1, separatorHeight}; // Qt leaves out rows with an empty size
    }
    QSize size = sizeOf(action_.item(), font);
    for (const auto& alternate : action_.alternates()) {
        size = size.expandedTo(sizeOf(*alternate, font));
    }
    return size;
}

void MenuRow::paint(QPainter& painter, const QStyleOptionMenuItem& option) const {
    const QRect& row = option.rect;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (action_.isSeparator()) {
        const QRectF line(row.left() + side, row.center().y(), row.width() - 2 * side, 1);
        painter.fillRect(line, theme_.separator);
        painter.restore();
        return;
    }
    const MenuItem& item = *action_.shown(action_.menuWidget().heldModifiers());
    const bool enabled = (option.state & QStyle::State_Enabled) != 0;
    const bool selected = enabled && (option.state & QStyle::State_Selected) != 0;
    QColor color = enabled ? theme_.label : theme_.tertiaryLabel;
    QColor secondary = enabled ? theme_.secondaryLabel : theme_.tertiaryLabel;
    if (!enabled && !item.action && !item.submenu) {
        // A line that only tells something must stay readable.
        color = theme_.secondaryLabel;
    }
    if (selected) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme_.accent);
        painter.drawRoundedRect(row, highlightRadius, highlightRadius);
        color = theme_.onAccent();
        secondary = color;
        secondary.setAlphaF(color.alphaF() * 0.82F);
    }

    const MenuWidget::Columns& columns = action_.menuWidget().columns();
    const double middle = row.top() + row.height() / 2.0;
    const ImportedRow* imported = importedRow(item);
    const QPointF mark(row.left() + side + 5.0, middle);
    if (imported && imported->mixed) {
        drawDash(painter, mark, color);
    } else if (item.on && imported && imported->radio) {
        drawBullet(painter, mark, color);
    } else if (item.on) {
        drawCheck(painter, mark, color);
    }
    if (columns.image > 0) {
        const QRectF place(row.left() + side + columns.check, row.top(), columns.image, row.height());
        action_.menuWidget().pictures().draw(painter, item.image, place, symbolSize, color);
    }

    const QString key = keyEquivalentText(item);
    int right = row.right() + 1 - side;
    painter.setFont(option.font);
    if (item.submenu) {
        drawArrow(painter, {right - 1.0, middle}, selected ? color : secondary);
        right -= arrowWidth + keyGap / 2;
    } else if (!key.isEmpty()) {
        painter.setPen(secondary);
        painter.drawText(QRect(row.left(), row.top(), right - row.left(), row.height()),
                         Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, key);
        right -= QFontMetrics(option.font).horizontalAdvance(key) + keyGap / 2;
    }

    const int left = row.left() + textLeft(item);
    const QFontMetrics metrics(option.font);
    const auto elided = [width = right - left](const QFontMetrics& meter, const std::string& text) {
        const QString whole = QString::fromStdString(text);
        // The menu was made wide enough for the rounded length; eliding goes by the exact one.
        return meter.horizontalAdvance(whole) <= width ? whole : meter.elidedText(whole, Qt::ElideMiddle, width);
    };
    painter.setPen(color);
    if (item.subtitle.empty()) {
        painter.drawText(QRect(left, row.top(), right - left, row.height()),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, elided(metrics, item.title));
    } else {
        const QFont small = subtitleFont(option.font);
        const QFontMetrics smallMetrics(small);
        const int height = metrics.height() + subtitleGap + smallMetrics.height();
        const int top = row.top() + (row.height() - height) / 2;
        painter.drawText(QRect(left, top, right - left, metrics.height()),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, elided(metrics, item.title));
        painter.setFont(small);
        painter.setPen(secondary);
        painter.drawText(QRect(left, top + metrics.height() + subtitleGap, right - left, smallMetrics.height()),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, elided(smallMetrics, item.subtitle));
    }
    painter.restore();
}

} // namespace rb
