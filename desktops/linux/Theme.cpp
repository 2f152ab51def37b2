#include "desktops/linux/Theme.h"

namespace rb {

namespace {

QColor gray(int level, double alpha = 1) {
    QColor color(level, level, level);
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

} // namespace

Theme Theme::make(bool dark, const QColor& accent) {
    Theme theme;
    theme.dark = dark;
    if (dark) {
        theme.accent = accent.isValid() ? accent : QColor(0x0A, 0x84, 0xFF);
        theme.destructive = QColor(0xFF, 0x45, 0x3A);
        theme.label = gray(255, 0.88);
        theme.secondaryLabel = gray(255, 0.58);
        theme.tertiaryLabel = gray(255, 0.32);
        theme.window = QColor(0x2A, 0x2A, 0x2D);
        theme.controlBackground = QColor(0x1D, 0x1D, 0x20);
        theme.button = QColor(0x4A, 0x4A, 0x4F);
        theme.buttonPressed = QColor(0x5C, 0x5C, 0x62);
        theme.buttonBorder = gray(255, 0.08);
        theme.menu = QColor(0x2C, 0x2C, 0x30);
        theme.menuBorder = gray(255, 0.16);
        theme.separator = gray(255, 0.12);
        theme.bar = QColor(0x1F, 0x1F, 0x22);
        theme.iconPlate = QColor(0xC4, 0xC4, 0xCA);
        theme.toolTip = QColor(0x3A, 0x3A, 0x3E);
        theme.sidebar = QColor(0x22, 0x22, 0x25);
        theme.green = QColor(0x30, 0xD1, 0x58);
        theme.blue = QColor(0x0A, 0x84, 0xFF);
    } else {
        theme.accent = accent.isValid() ? accent : QColor(0x00, 0x7A, 0xFF);
        theme.destructive = QColor(0xE0, 0x2E, 0x24);
        theme.label = gray(0, 0.86);
        theme.secondaryLabel = gray(0, 0.55);
        theme.tertiaryLabel = gray(0, 0.30);
        theme.window = QColor(0xF2, 0xF2, 0xF4);
        theme.controlBackground = QColor(0xFF, 0xFF, 0xFF);
        theme.button = QColor(0xFF, 0xFF, 0xFF);
        theme.buttonPressed = QColor(0xE4, 0xE4, 0xE8);
        theme.buttonBorder = gray(0, 0.17);
        theme.menu = QColor(0xFA, 0xFA, 0xFB);
        theme.menuBorder = gray(0, 0.20);
        theme.separator = gray(0, 0.11);
        theme.bar = QColor(0xF6, 0xF6, 0xF8);
        theme.iconPlate = QColor(0x6A, 0x6A, 0x70);
        theme.toolTip = QColor(0xFF, 0xFF, 0xFF);
        theme.sidebar = QColor(0xE6, 0xE6, 0xEA);
        theme.green = QColor(0x28, 0xA0, 0x45);
        theme.blue = QColor(0x00, 0x7A, 0xFF);
    }
    return theme;
}

QColor Theme::onAccent() const {
    // Perceived lightness: yellow and mint accents need dark text.
    const double lightness = 0.299 * accent.redF() + 0.587 * accent.greenF() + 0.114 * accent.blueF();
    return lightness > 0.72 ? gray(0, 0.86) : gray(255);
}

QPalette Theme::palette() const {
    QPalette palette(button, window);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, label);
    palette.setColor(QPalette::Base, controlBackground);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, label);
    palette.setColor(QPalette::PlaceholderText, tertiaryLabel);
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::ButtonText, label);
    palette.setColor(QPalette::BrightText, gray(255));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, onAccent());
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::ToolTipBase, toolTip);
    palette.setColor(QPalette::ToolTipText, label);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, tertiaryLabel);
    }
    return palette;
}

} // namespace rb
