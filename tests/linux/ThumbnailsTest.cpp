#include "desktops/linux/Thumbnails.h"
#include "tests/linux/LinuxFixture.h"
#include "tests/linux/Variable.h"

#include <QImage>

#include <filesystem>

namespace rb {

namespace {

namespace fs = std::filesystem;

// A cache of its own and a thumbnailer that notes what it is asked for.
class ThumbnailsTest : public EventLoopFixture {
protected:
    ThumbnailsTest() {
        fs::create_directories(folder_ / "data/thumbnailers");
        QImage picture(1024, 512, QImage::Format_RGB32);
        picture.fill(Qt::blue);
        EXPECT_TRUE(picture.save(QString::fromStdString(folder_ / "page.png")));
        writeProgram(folder_ / "render", "printf '%s %s\\n' \"$1\" \"$2\" >>" + (folder_ / "calls") + "; cp " +
                                             (folder_ / "page.png") + " \"$3\"");
        writeText(folder_ / "data/thumbnailers/own.thumbnailer",
                  "[Thumbnailer Entry]\nExec=" + (folder_ / "render") + " %s %i %o\nMimeType=text/plain;\n");
        writeText(file_, "text");
    }
    // The longest side of what comes; 0 for nothing.
    double sideOf(double points) {
        double side = 0;
        const Handle request = thumbnails_.requestDocumentThumbnail(
            file_, {points, points}, 2, [&](const std::shared_ptr<const Bitmap>& picture) {
                side = std::max(picture->pixelSize().width, picture->pixelSize().height);
            });
        EXPECT_TRUE(until([&] { return side > 0; })) << points;
        return side;
    }
    std::string calls() { return readText(folder_ / "calls"); }
    std::size_t kept(const std::string& size) {
        const fs::path cached = folder_ / "cache/thumbnails/" + size;
        return fs::exists(cached) ? static_cast<std::size_t>(std::distance(fs::directory_iterator(cached), {})) : 0;
    }

    TemporaryFolder folder_;
    Variable cache_{"XDG_CACHE_HOME", folder_ / "cache"};
    Variable data_{"XDG_DATA_HOME", folder_ / "data"};
    std::string file_ = folder_ / "50%o of %s, %u and %%i.txt";
    LinuxThumbnails thumbnails_;
};

TEST_F(ThumbnailsTest, ACardsSmallPictureIsNotTakenForALargeOne) {
    EXPECT_EQ(sideOf(100), 200);
    EXPECT_EQ(calls(), "256 " + file_ + "\n") << "the name is the file's, whatever signs are in it";
    EXPECT_EQ(kept("normal"), 0U);
    EXPECT_EQ(kept("large"), 1U);
    EXPECT_EQ(sideOf(100), 200);
    EXPECT_EQ(calls(), "256 " + file_ + "\n") << "kept";
    EXPECT_EQ(sideOf(450), 900);
    EXPECT_EQ(calls(), "256 " + file_ + "\n1024 " + file_ + "\n");
    EXPECT_EQ(kept("xx-large"), 1U);
    EXPECT_EQ(sideOf(200), 400) << "a larger one serves";
    EXPECT_EQ(calls(), "256 " + file_ + "\n1024 " + file_ + "\n");
    EXPECT_EQ(fs::status(folder_ / "cache/thumbnails").permissions() & fs::perms::all, fs::perms::owner_all);
}

} // namespace

} // namespace rb
