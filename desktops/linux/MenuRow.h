#pragma once

#include "desktops/linux/Theme.h"
#include "platform/Menu.h"

#include <QFont>
#include <QSize>

class QPainter;
class QStyleOptionMenuItem;

namespace rb {

class MenuAction;
class Pictures;

// How one line of a menu looks: check mark, picture, title with a smaller subtitle, key equivalent or arrow.
class MenuRow {
public:
    static constexpr int checkWidth = 18;
    // Width of the picture's column that an item asks for; 0 without a picture.
    static int imageWidth(const MenuItem& item, const Pictures& pictures);

    MenuRow(const MenuAction& action, const Theme& theme)
        : action_(action)
        , theme_(theme) {}

    QSize size(const QFont& font) const;
    void paint(QPainter& painter, const QStyleOptionMenuItem& option) const;

private:
    // Where titles begin, from the row's left edge.
    int textLeft(const MenuItem& item) const;
    QSize sizeOf(const MenuItem& item, const QFont& font) const;

    const MenuAction& action_;
    const Theme& theme_;
};

} // namespace rb
