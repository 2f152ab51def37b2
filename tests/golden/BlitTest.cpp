// Our own way of laying turned pictures down, beside QPainter's.

#include "desktops/linux/Blit.h"

#include <QImage>
#include <QPainter>
#include <QRegion>
#include <QTransform>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace rb {
namespace {

// Soft all over, so that two ways of sampling differ by little.
QImage softPicture() {
    QImage picture(61, 47, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    for (int y = 1; y < picture.height() - 1; ++y) {
        for (int x = 1; x < picture.width() - 1; ++x) {
            picture.setPixelColor(x, y, QColor(x * 4, y * 5, 128, 60 + x * 3));
        }
    }
    return picture;
}

QImage paper() {
    QImage image(120, 100, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(200, 220, 240, 128));
    return image;
}

// Pixels of which a channel is further off than that.
int different(const QImage& a, const QImage& b, int tolerance) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            const int off = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                      std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))});
            count += int{off > tolerance};
        }
    }
    return count;
}

TEST(Blit, ShowsWhatAPainterShows) {
    const QImage picture = softPicture();
    for (const double angle : {0.0, 3.0, -7.5, 90.0, 200.0}) {
        for (const double scale : {1.0, 0.5}) {
            for (const double opacity : {1.0, 0.4}) {
                const QTransform transform =
                    QTransform::fromTranslate(60.3, 50.7).rotate(angle).scale(scale, scale).translate(-30, -24);
                QImage ours = paper();
                blit(ours, ours.rect(), picture, transform, opacity);
                QImage painted = paper();
                QPainter painter(&painted);
                painter.setRenderHint(QPainter::SmoothPixmapTransform);
                painter.setTransform(transform);
                painter.setOpacity(opacity);
                painter.drawImage(0, 0, picture);
                painter.end();
                // The picture's outermost pixels are clear here and cut there.
                EXPECT_LT(different(ours, painted, 12), 260) << angle << " degrees, scale " << scale;
                EXPECT_GT(different(ours, paper(), 12), 300);
            }
        }
    }
}

TEST(Blit, TouchesOnlyTheClipAndEachPixelOnce) {
    const QImage picture = softPicture();
    const QTransform transform = QTransform::fromTranslate(20, 30).rotate(4);
    QImage whole = paper();
    blit(whole, whole.rect(), picture, transform, 1);
    // Cut in odd pieces it is the same as in one.
    QImage pieces = paper();
    for (int x = 0; x < 120; x += 13) {
        blit(pieces, QRect(x, 0, 13, 51), picture, transform, 1);
        blit(pieces, QRect(x, 51, 13, 49), picture, transform, 1);
    }
    EXPECT_EQ(different(whole, pieces, 3), 0) << "each piece rounds its beginning by itself";
    QImage part = paper();
    blit(part, QRect(30, 40, 10, 10), picture, transform, 1);
    EXPECT_EQ(different(part.copy(0, 0, 120, 40), paper().copy(0, 0, 120, 40), 0), 0);
    EXPECT_EQ(part.pixel(29, 45), paper().pixel(29, 45));
    EXPECT_EQ(part.pixel(39, 49), whole.pixel(39, 49));
    EXPECT_EQ(part.pixel(40, 49), paper().pixel(40, 49));
}

// With the address sanitizer these also show reads beyond the picture.
TEST(Blit, StaysWithinThePictureWhereverItLies) {
    const QImage picture = softPicture();
    for (const QPointF place : {QPointF(-30, -20), QPointF(100.5, 80.25), QPointF(0, 99.5), QPointF(119.75, 0),
                                QPointF(-60.01, 10), QPointF(5, -46.99), QPointF(500, 500)}) {
        for (const double angle : {0.0, 0.0001, 1.0, 45.0, 180.0}) {
            QImage target = paper();
            blit(target, target.rect(), picture, QTransform::fromTranslate(place.x(), place.y()).rotate(angle), 1);
            blit(target, QRect(-50, -50, 400, 400), picture,
                 QTransform::fromTranslate(place.x(), place.y()).rotate(angle).scale(0.5, 0.5), 1);
        }
    }
    QImage target = paper();
    blit(target, target.rect(), picture, QTransform(0, 0, 0, 0, 5, 5), 1);
    blit(target, target.rect(), QImage(2, 2, QImage::Format_ARGB32_Premultiplied), {}, 1);
    EXPECT_EQ(target, paper()) << "nothing to show";
}

} // namespace
} // namespace rb
