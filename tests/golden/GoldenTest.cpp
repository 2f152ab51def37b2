// The comparer itself: it must fail where it should.

#include "tests/golden/Golden.h"

#include <QFile>
#include <QPainter>
#include <gtest/gtest.h>

namespace rb {
namespace {

QImage disc() {
    QImage picture(64, 64, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(40, 90, 200));
    painter.drawEllipse(QRectF(12, 12, 40, 40));
    return picture;
}

TEST(Golden, NoticesADeliberatelyWrongReferenceAndShowsTheDifference) {
    const QString sheet = QStringLiteral(GOLDEN_DIFFERENCES "/wrong-on-purpose.png");
    QFile::remove(sheet);
    // Its reference shows the disc a few points further to the right.
    EXPECT_EQ(checkGolden(disc(), "wrong-on-purpose"), GoldenResult::Differs);
    const QImage shown(sheet);
    EXPECT_EQ(shown.size(), QSize(3 * 64, 64));
    EXPECT_EQ(shown.pixel(2 * 64 + 13, 32), 0xFFFF0000U) << "the left edge is marked";
    EXPECT_EQ(shown.pixel(2 * 64 + 32, 32), 0xFFFFFFFFU) << "the middle is not";
}

TEST(Golden, ToleratesFaintDifferencesButNotMissingReferencesOrOtherSizes) {
    const QImage picture = disc();
    ASSERT_EQ(checkGolden(picture, "disc"), GoldenResult::Matches);
    QImage faint = picture.copy();
    for (int x = 20; x < 44; ++x) {
        faint.setPixelColor(x, 32, QColor(50, 100, 210));
    }
    EXPECT_EQ(checkGolden(faint, "disc"), GoldenResult::Matches);
    for (int x = 20; x < 44; ++x) {
        faint.setPixelColor(x, 32, Qt::white);
    }
    EXPECT_EQ(checkGolden(faint, "disc"), GoldenResult::Differs);
    EXPECT_EQ(checkGolden(picture.copy(0, 0, 64, 63), "disc"), GoldenResult::Differs);
    EXPECT_EQ(checkGolden(picture, "never drawn"), GoldenResult::MissingReference);
}

} // namespace
} // namespace rb
