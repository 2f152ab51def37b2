#pragma once

#include "motion/Geometry.h"
#include "motion/Image.h"

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QString>
#include <vector>

namespace rb {

// The named symbols, drawn from the scalable files among the program's resources. Nothing is loaded before a symbol
// is asked for, and the ones the status bar needs at once are stored as finished pictures, so that the library that
// reads scalable files comes in only with the first menu. Main thread only.
class Symbols {
public:
    explicit Symbols(QString folder = QStringLiteral(":/symbols"));

    // Width and height in points of the square that a symbol takes at a point size.
    static double sideFor(double pointSize);
    bool contains(const std::string& name) const;
    // At its own point size, or at 13 when it has none; zero for an unknown name.
    Size size(const Symbol& symbol) const;

    // The symbol in a square of that many pixels, in its own tint or the given one; null for an unknown name.
    QImage image(const Symbol& symbol, int pixels, const QColor& foreground);
    // For menus and buttons, `side` points wide, for screens of 1 and 2 pixels per point.
    QIcon icon(const Symbol& symbol, double side, const QColor& foreground);

private:
    struct Entry {
        std::string name;
        int pixels = 0;
        FontWeight weight = FontWeight::Regular;
        QRgb color = 0;
        QImage image;
    };
    QImage shape(const QString& name, int pixels, FontWeight weight) const;

    QString folder_;
    std::vector<Entry> cache_; // the least recently used one first
};

} // namespace rb
