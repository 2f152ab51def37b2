#include "desktops/linux/Style.h"

#include "desktops/linux/MenuAction.h"
#include "desktops/linux/MenuRow.h"
#include "desktops/linux/MenuWidget.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>
#include <QStyleOptionComboBox>
#include <QToolTip>

#include <algorithm>

namespace rb {

namespace {

constexpr int buttonHeight = 28;
constexpr int buttonPadding = 16;
constexpr int smallestButton = 68;
constexpr double buttonRadius = 6;
constexpr int toolTipPadding = 6;

constexpr int ringWidth = LinuxStyle::focusRingWidth;

} // namespace

LinuxStyle::LinuxStyle(const Theme& theme)
    : QProxyStyle(QStringLiteral("Fusion"))
    , theme_(theme) {
    setTheme(theme);
}

QFont LinuxStyle::interfaceFont(const QFont& session) {
    QFont font = session;
    // The language decides which shapes of the shared Chinese characters a font draws; without these the fallback
    // may pick Japanese ones. Families that aren't installed are passed over.
    QStringList families = session.families();
    for (const char* family : {"Noto Sans CJK SC", "Source Han Sans SC", "Noto Sans SC", "WenQuanYi Micro Hei",
                               "WenQuanYi Zen Hei", "Droid Sans Fallback"}) {
        families.append(QLatin1String(family));
    }
    font.setFamilies(families);
    font.setPixelSize(13);
    return font;
}

const Theme& LinuxStyle::themeOf(const QWidget* widget) const {
    return widget && widget->window()->property(darkProperty).toBool() ? dark_ : theme_;
}

void LinuxStyle::drawButton(const QStyleOption& option, QPainter& painter, const Theme& theme, bool destructive) {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(&option);
    const bool isDefault = button && (button->features & QStyleOptionButton::DefaultButton) != 0;
    const bool enabled = (option.state & State_Enabled) != 0;
    const bool pressed = (option.state & State_Sunken) != 0;
    const QRectF body = QRectF(option.rect).adjusted(ringWidth, ringWidth, -ringWidth, -ringWidth);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (enabled && (option.state & State_HasFocus) != 0 && (option.state & State_KeyboardFocusChange) != 0) {
        QColor ring = theme.accent;
        ring.setAlphaF(0.45F);
        painter.setPen(QPen(ring, ringWidth));
        painter.drawRoundedRect(body.adjusted(-1, -1, 1, 1), buttonRadius + 1, buttonRadius + 1);
    }
    QColor fill = pressed ? theme.buttonPressed : theme.button;
    QColor edge = theme.buttonBorder;
    if (isDefault && enabled) {
        const QColor& loud = destructive ? theme.destructive : theme.accent;
        fill = pressed ? loud.darker(118) : loud;
        edge = theme.dark ? QColor(255, 255, 255, 26) : QColor(0, 0, 0, 30);
    } else if (!enabled) {
        fill.setAlphaF(0.45F);
        edge.setAlphaF(edge.alphaF() * 0.6F);
    } else if ((option.state & State_MouseOver) != 0 && !pressed) {
        fill = theme.dark ? fill.lighter(110) : fill.darker(103);
    }
    if (!theme.dark && enabled && !pressed) {
        // The faint shade under a light button that lifts it off the window.
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 16));
        painter.drawRoundedRect(body.translated(0, 1), buttonRadius, buttonRadius);
    }
    painter.setPen(QPen(edge, 1));
    painter.setBrush(fill);
    painter.drawRoundedRect(body.adjusted(0.5, 0.5, -0.5, -0.5), buttonRadius - 0.5, buttonRadius - 0.5);
    painter.restore();
}

void LinuxStyle::drawPopUp(const QStyleOptionComplex& option, QPainter& painter, const Theme& theme) {
    // A button of its width, whose ring would lie outside, and two small arrows.
    QStyleOptionButton button;
    button.QStyleOption::operator=(option);
    button.rect = option.rect.adjusted(-ringWidth, -ringWidth, ringWidth, ringWidth);
    drawButton(button, painter, theme, false);
    const QPointF middle(option.rect.right() - 13.0, QRectF(option.rect).center().y());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen((option.state & State_Enabled) != 0 ? theme.secondaryLabel : theme.tertiaryLabel, 1.5,
                        Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const int direction : {-1, 1}) {
        const QPointF tip = middle + QPointF(0, direction * 5.5);
        painter.drawPolyline(QPolygonF{tip + QPointF(-3, direction * -3), tip, tip + QPointF(3, direction * -3)});
    }
    painter.restore();
}

void LinuxStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                    const QWidget* widget) const {
    if (control == CC_ComboBox) {
        drawPopUp(*option, *painter, themeOf(widget));
        return;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

void LinuxStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    switch (element) {
    case CE_PushButtonBevel:
        drawButton(*option, *painter, themeOf(widget), widget && widget->property(destructiveProperty).toBool());
        return;
    case CE_PushButtonLabel:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
            QStyleOptionButton copy = *button;
            if ((copy.features & QStyleOptionButton::DefaultButton) != 0 && (copy.state & State_Enabled) != 0) {
                copy.palette.setColor(QPalette::ButtonText, themeOf(widget).onAccent());
            } else if (widget && widget->property(destructiveProperty).toBool()) {
                copy.palette.setColor(QPalette::ButtonText, themeOf(widget).destructive);
            }
            // Pressed buttons darken; their text stays where it is.
            copy.state &= ~State_Sunken;
            QProxyStyle::drawControl(element, &copy, painter, widget);
            return;
        }
        break;
    case CE_MenuItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
            if (const MenuAction* action = MenuAction::of(*item)) {
                MenuRow(*action, theme_).paint(*painter, *item);
                return;
            }
        }
        break;
    case CE_MenuEmptyArea:
        return; // the panel is already painted
    default:
        break;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void LinuxStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    switch (element) {
    case PE_PanelMenu: {
        const auto* menu = dynamic_cast<const MenuWidget*>(widget);
        const bool rounded = menu && menu->margin() > 0;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing, rounded);
        const double radius = rounded ? MenuWidget::cornerRadius : 0;
        painter->setPen(QPen(theme_.menuBorder, 1));
        painter->setBrush(theme_.menu);
        const QRectF panel(menu ? menu->panelRect() : option->rect);
        painter->drawRoundedRect(panel.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
        painter->restore();
        return;
    }
    case PE_FrameMenu:
    case PE_FrameFocusRect:
        return;
    case PE_IndicatorCheckBox: {
        const Theme& theme = themeOf(widget);
        const bool on = (option->state & State_On) != 0;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(on ? theme.accent : theme.secondaryLabel, 1));
        painter->setBrush(on ? theme.accent : theme.controlBackground);
        const QRectF box = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
        painter->drawRoundedRect(box, 3.5, 3.5);
        if (on) {
            painter->setPen(QPen(theme.onAccent(), 1.7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter->drawPolyline(
                QPolygonF{QPointF(box.left() + box.width() * 0.25, box.center().y()),
                          QPointF(box.left() + box.width() * 0.43, box.bottom() - box.height() * 0.28),
                          QPointF(box.right() - box.width() * 0.22, box.top() + box.height() * 0.28)});
        }
        painter->restore();
        return;
    }
    case PE_PanelTipLabel:
        painter->save();
        painter->setPen(QPen(theme_.menuBorder, 1));
        painter->setBrush(theme_.toolTip);
        painter->drawRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5));
        painter->restore();
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

QSize LinuxStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                   const QWidget* widget) const {
    if (type == CT_PushButton) {
        const int width = std::max(contents.width() + 2 * buttonPadding, smallestButton);
        return {width + 2 * ringWidth, buttonHeight + 2 * ringWidth};
    }
    if (type == CT_MenuItem) {
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
            if (const MenuAction* action = MenuAction::of(*item)) {
                return MenuRow(*action, theme_).size(item->font);
            }
        }
    }
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

int LinuxStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_MenuHMargin:
    case PM_MenuVMargin: {
        const auto* menu = dynamic_cast<const MenuWidget*>(widget);
        return MenuWidget::padding + (menu ? menu->margin() : 0);
    }
    case PM_MenuPanelWidth:
    case PM_MenuDesktopFrameWidth:
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    case PM_SubMenuOverlap:
        return -2;
    case PM_MenuScrollerHeight:
        return 18;
    case PM_ToolTipLabelFrameWidth:
        return toolTipPadding;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int LinuxStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* data) const {
    switch (hint) {
    case SH_Menu_MouseTracking:
    case SH_Menu_Scrollable:
    case SH_Menu_SloppySubMenus:
    case SH_Menu_AllowActiveAndDisabled:
        return hint == SH_Menu_AllowActiveAndDisabled ? 0 : 1;
    case SH_Menu_SubMenuPopupDelay:
        return 120;
    case SH_Menu_KeyboardSearch:
        return 1;
    case SH_ComboBox_Popup: // a list of limited length below it
    case SH_UnderlineShortcut:
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_DialogButtonBox_ButtonsHaveIcons:
        return 0;
    case SH_ToolTipLabel_Opacity:
        return 255;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

} // namespace rb
