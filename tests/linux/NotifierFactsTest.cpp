#include "desktops/linux/NotifierFacts.h"

#include <QDBusObjectPath>
#include <gtest/gtest.h>

namespace rb {

namespace {

NotifierPixmap pixmap(int width, int height, unsigned char value) {
    return {width, height, QByteArray(qsizetype{4} * width * height, static_cast<char>(value))};
}

TEST(NotifierFactsTest, ReadsWhatAnItemSays) {
    const QVariantMap properties{
        {"Id", "mail"},
        {"Title", "Mail"},
        {"Status", "NeedsAttention"},
        {"IconName", "mail-unread"},
        {"IconThemePath", "/opt/mail/icons"},
        {"IconPixmap", QVariant::fromValue(NotifierPixmaps{pixmap(16, 16, 0x40)})},
        {"ToolTip", QVariant::fromValue(NotifierToolTip{{}, {}, "Mail", "<b>3</b> new &amp; 2 old"})},
        {"Menu", QVariant::fromValue(QDBusObjectPath("/MenuBar"))},
        {"ItemIsMenu", true},
    };
    const NotifierFacts facts = readNotifierFacts(properties);
    EXPECT_EQ(facts.id, "mail");
    EXPECT_EQ(facts.status, "NeedsAttention");
    EXPECT_EQ(facts.iconName, "mail-unread");
    EXPECT_EQ(facts.themePath, "/opt/mail/icons");
    EXPECT_EQ(facts.icon.size(), 1);
    EXPECT_EQ(facts.toolTip, "Mail\n3 new & 2 old");
    EXPECT_EQ(facts.menuPath, "/MenuBar");
    EXPECT_TRUE(facts.itemIsMenu);
}

TEST(NotifierFactsTest, WhatIsMissingOrOfAnotherTypeIsEmpty) {
    EXPECT_EQ(readNotifierFacts({}).menuPath, "");
    const NotifierFacts facts = readNotifierFacts({{"Id", 7},
                                                   {"Title", QStringList{"a", "b"}},
                                                   {"IconPixmap", "picture"},
                                                   {"ToolTip", 3.5},
                                                   {"Menu", QVariant::fromValue(QDBusObjectPath("/NO_DBUSMENU"))},
                                                   {"IconName", QString(100000, u'x')}});
    EXPECT_TRUE(facts.icon.isEmpty());
    EXPECT_EQ(facts.toolTip, "");
    EXPECT_EQ(facts.menuPath, "");
    EXPECT_LT(facts.iconName.size(), 1000);
}

TEST(NotifierFactsTest, TakesThePictureThatSuitsTheSize) {
    const NotifierPixmaps set{pixmap(64, 64, 3), pixmap(16, 16, 1), pixmap(24, 24, 2)};
    EXPECT_EQ(bestPixmap(set, 20).width(), 24);
    EXPECT_EQ(bestPixmap(set, 24).width(), 24);
    EXPECT_EQ(bestPixmap(set, 200).width(), 64);
    EXPECT_EQ(bestPixmap(set, 8).width(), 16);
    NotifierPixmap orange{1, 1, QByteArray("\xFF\xF0\x80\x10", 4)};
    EXPECT_EQ(bestPixmap({orange}, 20).pixel(0, 0), qRgba(0xF0, 0x80, 0x10, 0xFF)) << "alpha first, big-endian";
}

TEST(NotifierFactsTest, RefusesPicturesThatCannotBe) {
    const NotifierPixmaps bad{
        {0, 0, {}},
        {-5, -5, QByteArray(100, 'x')},
        {22, 22, QByteArray(10, 'x')},                     // too few bytes
        {1 << 16, 1 << 16, QByteArray(16, 'x')},           // whose count of bytes overflows
        {30000, 1, QByteArray(qsizetype{4} * 30000, 'x')}, // no icon
    };
    EXPECT_TRUE(bestPixmap(bad, 20).isNull());
    EXPECT_TRUE(bestPixmap({}, 20).isNull());
    NotifierPixmaps oneGood = bad;
    oneGood.append(pixmap(10, 10, 9));
    EXPECT_EQ(bestPixmap(oneGood, 20).width(), 10);
}

} // namespace

} // namespace rb
