#include "desktops/linux/IconContrast.h"

#include <QPainter>
#include <gtest/gtest.h>

namespace rb {

namespace {

const QColor darkBar(0x1F, 0x1F, 0x22);
const QColor lightBar(0xF6, 0xF6, 0xF8);
const QColor white(255, 255, 255, 220);
const QColor black(0, 0, 0, 220);

QImage icon(const QColor& body, const QColor& inside = {}) {
    QImage image(22, 22, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(body);
    painter.drawEllipse(2, 2, 18, 18);
    if (inside.isValid()) {
        painter.setBrush(inside);
        painter.drawRect(8, 8, 6, 6);
    }
    return image;
}

double lightnessAt(const QImage& image, int x, int y) {
    return image.pixelColor(x, y).lightnessF();
}

TEST(IconContrastTest, ShadesLikeTheGroundTakeTheForeground) {
    const QImage dark = icon(QColor(0x20, 0x22, 0x25));
    EXPECT_GT(lightnessAt(readable(dark, darkBar, white), 11, 11), 0.9);
    EXPECT_EQ(readable(dark, lightBar, black), dark) << "made for this one";
    const QImage light = icon(QColor(0xF0, 0xF0, 0xF0));
    EXPECT_LT(lightnessAt(readable(light, lightBar, black), 11, 11), 0.1);
    EXPECT_EQ(readable(light, darkBar, white), light);
    EXPECT_EQ(qAlpha(readable(dark, darkBar, white).pixel(0, 0)), 0) << "in its own shape";
}

TEST(IconContrastTest, ASignWithinAShadeStaysASign) {
    const QImage changed = readable(icon(QColor(0x10, 0x10, 0x10), QColor(0xE0, 0xE0, 0xE0)), darkBar, white);
    EXPECT_GT(lightnessAt(changed, 4, 11), 0.8);
    EXPECT_LT(lightnessAt(changed, 11, 11), 0.2);
}

TEST(IconContrastTest, ColoursStayAsTheyAre) {
    for (const QImage& image :
         {icon(QColor(0x10, 0x30, 0x90)), icon(QColor(0x20, 0x20, 0x20), Qt::red), icon(QColor(0xFF, 0xE0, 0x40))}) {
        EXPECT_EQ(readable(image, darkBar, white), image);
        EXPECT_EQ(readable(image, lightBar, black), image);
    }
}

TEST(IconContrastTest, NothingToSeeIsNothingToChange) {
    EXPECT_TRUE(readable({}, darkBar, white).isNull());
    QImage empty(22, 22, QImage::Format_ARGB32_Premultiplied);
    empty.fill(Qt::transparent);
    EXPECT_EQ(readable(empty, darkBar, white), empty);
}

} // namespace

} // namespace rb
