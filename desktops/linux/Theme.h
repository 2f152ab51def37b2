#pragma once

#include <QColor>
#include <QPalette>

namespace rb {

// The colours that menus, windows and alerts are painted with, in one appearance. Plain values.
struct Theme {
    bool dark = false;
    QColor accent;
    QColor destructive;
    QColor label;
    QColor secondaryLabel;
    QColor tertiaryLabel;
    QColor window;
    QColor controlBackground; // fields and recorders
    QColor button;
    QColor buttonPressed;
    QColor buttonBorder;
    QColor menu;
    QColor menuBorder;
    QColor separator;
    QColor bar;       // our own menu bar
    QColor iconPlate; // in it, behind icons that are as dark or as light as the bar
    QColor toolTip;
    QColor sidebar;
    QColor green;
    QColor blue;

    // An invalid accent takes the usual blue of that appearance.
    static Theme make(bool dark, const QColor& accent);
    QPalette palette() const;
    // Readable on the accent colour.
    QColor onAccent() const;
};

} // namespace rb
