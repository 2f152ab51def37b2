#pragma once

#include <QColor>
#include <QImage>

namespace rb {

// Other programs' icons were drawn for panels of another lightness. Pure functions.

// What a picture's visible pixels look like; lightness from 0 to 1, as perceived.
struct IconTone {
    double covered = 0;   // share of the picture that is visible
    double lightness = 0; // of what is visible, on average
    double spread = 0;    // standard deviation of the lightness
    double colorful = 0;  // share of what is visible that has a hue of its own
};
IconTone toneOf(const QImage& icon);

// Of lightness, between an icon and its ground.
inline constexpr double leastContrast = 0.3;
// Whether it would hardly be seen on a ground of that colour.
bool isHardToSee(const IconTone& tone, const QColor& ground, double least = leastContrast);

// The icon as it can be seen there: one in shades of grey that is as dark or as light as the ground gets the foreground
// colour, or, when it has lighter and darker parts, has them swapped. Others stay as they are.
QImage readable(const QImage& icon, const QColor& ground, const QColor& foreground);

} // namespace rb
