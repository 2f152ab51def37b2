#include "desktops/linux/Thumbnails.h"

#include "tests/linux/LinuxFixture.h"

#include <QBuffer>
#include <QImage>

#include <atomic>

namespace rb {

namespace {

// Pictures of files, as far as they need no screen.
class PictureTest : public testing::Test {
protected:
    static QImage photo() {
        QImage image(300, 200, QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            for (int column = 0; column < image.width(); ++column) {
                image.setPixel(column, y, qRgb(column % 256, y, (column * y) % 256));
            }
        }
        return image;
    }
    static SharedBytes encoded(const QImage& image, const char* format) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, format));
        return std::make_shared<const Bytes>(bytes.begin(), bytes.end());
    }
    std::string file(const std::string& name, const SharedBytes& bytes, std::size_t most = SIZE_MAX) {
        std::ofstream(folder_ / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes->data()),
                   static_cast<std::streamsize>(std::min(most, bytes->size())));
        return folder_ / name;
    }

    TemporaryFolder folder_;
    LinuxThumbnails thumbnails_;
    const std::atomic<bool> wanted_ = false;
};

TEST_F(PictureTest, AFilesPictureComesWholeAsPng) {
    for (const char* format : {"JPG", "BMP", "PNG"}) {
        const SharedBytes bytes = encoded(photo(), format);
        const SharedBytes png = thumbnails_.pngData(bytes, wanted_);
        ASSERT_TRUE(png) << format;
        const QImage made = QImage::fromData(png->data(), static_cast<int>(png->size()), "PNG");
        EXPECT_EQ(made,
                  QImage::fromData(bytes->data(), static_cast<int>(bytes->size())).convertToFormat(made.format()));
    }
    const SharedBytes text = std::make_shared<const Bytes>(Bytes{'t', 'e', 'x', 't'});
    EXPECT_EQ(thumbnails_.pngData(text, wanted_), nullptr);
    EXPECT_EQ(thumbnails_.pngData(std::make_shared<const Bytes>(), wanted_), nullptr);
}

TEST_F(PictureTest, WhatNobodyWantsIsNotFinished) {
    const std::atomic<bool> givenUp = true;
    EXPECT_EQ(thumbnails_.pngData(encoded(photo(), "JPG"), givenUp), nullptr);
}

TEST_F(PictureTest, TheBeginningTellsWhetherAFileIsAPicture) {
    const SharedBytes jpeg = encoded(photo(), "JPG");
    EXPECT_TRUE(thumbnails_.canDecode(file("a.jpg", jpeg)));
    EXPECT_TRUE(thumbnails_.canDecode(file("wrong ending.txt", encoded(photo(), "BMP"))));
    EXPECT_TRUE(thumbnails_.canDecode(file("cut.jpg", jpeg, jpeg->size() / 2))) << "only decoding would tell";
    EXPECT_FALSE(thumbnails_.canDecode(file("text.jpg", std::make_shared<const Bytes>(Bytes{'n', 'o'}))));
    EXPECT_FALSE(thumbnails_.canDecode(file("empty.png", std::make_shared<const Bytes>())));
    EXPECT_FALSE(thumbnails_.canDecode(folder_ / "missing.png"));
    // Its header says 60,000 by 60,000 pixels.
    Bytes huge = *jpeg;
    const Bytes frame{0xFF, 0xC0, 0x00, 0x11, 0x08};
    const auto header = std::search(huge.begin(), huge.end(), frame.begin(), frame.end());
    ASSERT_NE(header, huge.end());
    std::fill_n(header + static_cast<std::ptrdiff_t>(frame.size()), 4, std::uint8_t{0xEA});
    EXPECT_FALSE(thumbnails_.canDecode(file("huge.jpg", std::make_shared<const Bytes>(huge))));
    EXPECT_EQ(thumbnails_.pngData(std::make_shared<const Bytes>(huge), wanted_), nullptr);
}

} // namespace

} // namespace rb
