#pragma once

#include "desktops/linux/Theme.h"

#include <QFont>
#include <QProxyStyle>

namespace rb {

// How our own windows, buttons and menus are drawn. One per program, installed as the application's style. Main
// thread only.
class LinuxStyle final : public QProxyStyle {
public:
    // Around a button, for the ring that shows the keyboard focus.
    static constexpr int focusRingWidth = 3;

    // Set to true on a button that destroys something: it is written in red.
    static constexpr const char* destructiveProperty = "rbDestructive";
    // Set to true on a window that is dark whatever the session's appearance.
    static constexpr const char* darkProperty = "rbDark";

    explicit LinuxStyle(const Theme& theme);

    const Theme& theme() const { return theme_; }
    void setTheme(const Theme& theme) {
        theme_ = theme;
        dark_ = Theme::make(true, theme.dark ? theme.accent : QColor());
    }

    // The session's interface font with families for Chinese behind it, 13 points.
    static QFont interfaceFont(const QFont& session);

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;

private:
    static void drawButton(const QStyleOption& option, QPainter& painter, const Theme& theme, bool destructive);
    static void drawPopUp(const QStyleOptionComplex& option, QPainter& painter, const Theme& theme);
    const Theme& themeOf(const QWidget* widget) const;

    Theme theme_;
    Theme dark_;
};

} // namespace rb
