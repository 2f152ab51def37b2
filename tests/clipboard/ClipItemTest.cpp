#include "clipboard/ClipItem.h"
#include "clipboard/ClipText.h"
#include "platform/ByteCounts.h"

#include <gtest/gtest.h>

namespace rb {

namespace {

TEST(ClipTextTest, CountsUtf16UnitsAndTearsNothingApart) {
    EXPECT_EQ(utf16Length("a中😀"), 4U);
    EXPECT_EQ(utf16Length("\xff\xe4\xb8"), 3U) << "malformed bytes count one each";
    EXPECT_EQ(utf16Prefix("a中😀b", 3), "a中");
    EXPECT_EQ(utf16Prefix("a中😀b", 4), "a中😀");
    EXPECT_EQ(utf16Prefix("ab", 9), "ab");
    EXPECT_EQ(trimmedWhole("\u00A0\u2029\n x \u0085"), "x");
    EXPECT_EQ(trimmedWhole("\u200B"), "\u200B") << "no width, but no white space";
    EXPECT_EQ(trimmedLine(" \tx\n"), "x\n");
    EXPECT_EQ(trimmedLine(" \r"), "\r");
}

TEST(ByteCountsTest, RoundsIntoTheNextUnit) {
    EXPECT_EQ(plainByteCount(0), "0 字节");
    EXPECT_EQ(plainByteCount(999), "999 字节");
    EXPECT_EQ(plainByteCount(1499), "1 KB");
    EXPECT_EQ(plainByteCount(999'499), "999 KB");
    EXPECT_EQ(plainByteCount(999'999), "1 MB");
    EXPECT_EQ(plainByteCount(6'291'456), "6.3 MB");
    EXPECT_EQ(plainByteCount(2'000'000'000), "2 GB");
    EXPECT_EQ(plainByteCount(2'050'000'000), "2.05 GB");
}

TEST(ClipItemTest, EncodingKeepsTheContentOnce) {
    const auto data = std::make_shared<const Bytes>(Bytes{1, 2, 3});
    const RBClipItem item = RBClipItem::ofImage(data, "public.png", 12.5);
    const RBClipItem again = RBClipItem::decode(item.encode(), 99);
    EXPECT_EQ(again.imageData(), data) << "the same bytes, not a copy";
    EXPECT_EQ(again.date, 12.5);
    EXPECT_TRUE(again.sameContentAs(item));
    EXPECT_FALSE(again.sameContentAs(RBClipItem::ofText("x", 12.5)));
    EXPECT_TRUE(item.sameContentAs(RBClipItem::ofImage(std::make_shared<const Bytes>(*data), "public.tiff", 0)));
    const RBClipItem unknown = RBClipItem::decode({{"kind", std::int64_t{7}}}, 0);
    EXPECT_FALSE(unknown.sameContentAs(unknown));
}

} // namespace

} // namespace rb
