#include "clipboard/ClipItem.h"
#include "clipboard/ClipText.h"
#include "platform/ByteCounts.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>

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
    EXPECT_EQ(trimmedWhole("  中 \u3000"), "中");
    EXPECT_EQ(trimmedWhole("\u3000\u2028 \n"), "");
    EXPECT_EQ(trimmedWhole("é\u2009"), "é");
    EXPECT_EQ(trimmedWhole("x\xe3\x80"), "x\xe3\x80") << "a torn character stays";
    EXPECT_EQ(utf16Length("eight ascii, then 中文 and twenty more 😀"), 39U);
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

// A store that counts what is read from it.
class CountingStore final : public ByteStore {
public:
    explicit CountingStore(Bytes bytes)
        : bytes_(std::move(bytes)) {}
    std::uint64_t size() const override { return bytes_.size(); }
    bool read(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), into.size(), into.begin());
        read_ += into.size();
        return true;
    }
    std::size_t takeRead() const { return std::exchange(read_, 0); }

private:
    Bytes bytes_;
    mutable std::size_t read_ = 0;
};

TEST(BlobTest, IsTheSameInMemoryAndInAStore) {
    Bytes noise(1'000'000);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : noise) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24U);
    }
    Bytes other = noise;
    other.back() ^= 1;
    Bytes elsewhere = noise;
    elsewhere[500'001] ^= 1; // beside all samples
    const auto store = std::make_shared<const CountingStore>(noise);

    const Blob memory(std::make_shared<const Bytes>(noise));
    const Blob stored({store, 0}, noise.size());
    EXPECT_EQ(*stored.bytes(), noise);
    EXPECT_TRUE(memory.sameAs(stored));
    EXPECT_TRUE(stored.sameAs(stored));
    EXPECT_FALSE(stored.sameAs(Blob(std::make_shared<const Bytes>(elsewhere))));
    store->takeRead();
    EXPECT_FALSE(stored.sameAs(Blob(std::make_shared<const Bytes>(other))));
    EXPECT_FALSE(stored.sameAs(Blob(std::make_shared<const Bytes>(3))));
    EXPECT_EQ(store->takeRead(), 0U) << "told apart by what is known";
    EXPECT_TRUE(Blob(std::make_shared<const Bytes>()).sameAs(Blob({store, 7}, 0)));

    EXPECT_FALSE(memory.place());
    memory.moveTo({store, 0});
    EXPECT_EQ(memory.place()->store, store);
    Bytes part(10);
    EXPECT_TRUE(memory.read(999'990, part));
    EXPECT_EQ(part.back(), noise.back());
    EXPECT_FALSE(memory.read(999'991, part)) << "beyond the end";
}

TEST(ClipItemTest, EncodingKeepsTheContentOnce) {
    const auto data = std::make_shared<const Bytes>(Bytes{1, 2, 3});
    const RBClipItem item = RBClipItem::ofImage(data, "public.png", 12.5);
    const RBClipItem again = RBClipItem::decode(item.encode(), 99);
    EXPECT_EQ(again.imageData()->bytes(), data) << "the same bytes, not a copy";
    EXPECT_EQ(again.date, 12.5);
    EXPECT_TRUE(again.sameContentAs(item));
    EXPECT_FALSE(again.sameContentAs(RBClipItem::ofText("x", 12.5)));
    EXPECT_TRUE(item.sameContentAs(RBClipItem::ofImage(std::make_shared<const Bytes>(*data), "public.tiff", 0)));
    const RBClipItem unknown = RBClipItem::decode({{"kind", std::int64_t{7}}}, 0);
    EXPECT_FALSE(unknown.sameContentAs(unknown));
}

} // namespace

} // namespace rb
