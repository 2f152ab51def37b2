#include "desktops/linux/CaptureAttributes.h"
#include "desktops/linux/FolderWatches.h"
#include "desktops/linux/PixelMatch.h"
#include "tests/linux/LinuxFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <unistd.h>
#include <utility>

namespace rb {

namespace {

namespace fs = std::filesystem;

std::string xml(const std::string& content) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)" + content + "</plist>";
}

TEST(PropertyListNumbersTest, ReadsArraysOfNumbersInEveryFormat) {
    EXPECT_EQ(numbersOfPropertyList(xml("<array><real>1.5</real><integer>20</integer></array>")),
              (PropertyArray{1.5, 20}));
    // A binary list of the integers 1 and 2.
    const std::string binary("bplist00\xa2\x01\x02\x10\x01\x10\x02\x08\x0b\x0d\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x03"
                             "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x0f",
                             15 + 3 + 32);
    EXPECT_EQ(numbersOfPropertyList(binary), (PropertyArray{1, 2}));
    EXPECT_EQ(numbersOfPropertyList(xml("<array><string>1</string><true/></array>")), (PropertyArray{"", ""}))
        << "what is no number keeps its place";
}

TEST(PropertyListNumbersTest, RefusesEverythingElse) {
    for (const std::string& wrong : {std::string(), std::string("100"), std::string("bplist00"), xml("<dict/>"),
                                     xml("<array>"), std::string(70000, 'x'), xml("<integer>1</integer>"),
                                     std::string("bplist00\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff", 18)}) {
        EXPECT_FALSE(numbersOfPropertyList(wrong)) << wrong.substr(0, 60);
    }
}

class PixelMatchTest : public testing::Test {
protected:
    static PixelPicture noise(int width, int height) {
        std::mt19937 random(7);
        PixelPicture picture{.width = width, .height = height, .pixels = {}};
        for (int i = 0; i < width * height; ++i) {
            picture.pixels.push_back(static_cast<std::uint32_t>(random()) | 0xff000000);
        }
        return picture;
    }
    static PixelPicture cut(const PixelPicture& from, const PixelRect& rect) {
        PixelPicture part{.width = rect.width, .height = rect.height, .pixels = {}};
        for (int y = 0; y < rect.height; ++y) {
            const auto row = from.pixels.begin() + (rect.y + y) * from.width + rect.x;
            part.pixels.insert(part.pixels.end(), row, row + rect.width);
        }
        return part;
    }
    static void paste(PixelPicture& onto, const PixelPicture& part, int x, int y) {
        for (int line = 0; line < part.height; ++line) {
            std::copy_n(part.pixels.begin() + line * part.width, part.width,
                        onto.pixels.begin() + (y + line) * onto.width + x);
        }
    }
};

TEST_F(PixelMatchTest, FindsTheOnePlaceToThePixel) {
    const PixelPicture screen = noise(300, 200);
    for (const PixelRect& rect : {PixelRect{0, 0, 300, 200}, PixelRect{17, 31, 40, 50}, PixelRect{299, 199, 1, 1},
                                  PixelRect{260, 0, 40, 200}}) {
        EXPECT_EQ(onlyPlaceOf(cut(screen, rect), screen), rect);
    }
    PixelPicture almost = cut(screen, {17, 31, 40, 50});
    almost.pixels[1999] ^= 1;
    EXPECT_EQ(onlyPlaceOf(almost, screen), std::nullopt);
    EXPECT_EQ(onlyPlaceOf(noise(301, 10), screen), std::nullopt);
    EXPECT_EQ(onlyPlaceOf({}, screen), std::nullopt);
}

TEST_F(PixelMatchTest, TwoPlacesAreNone) {
    PixelPicture screen = noise(300, 200);
    const PixelPicture part = cut(screen, {10, 10, 30, 20});
    paste(screen, part, 200, 150);
    EXPECT_EQ(onlyPlaceOf(part, screen), std::nullopt);
    const PixelPicture plain{.width = 100, .height = 100, .pixels = std::vector<std::uint32_t>(10000, 0xff112233)};
    const PixelPicture wall{.width = 300, .height = 200, .pixels = std::vector<std::uint32_t>(60000, 0xff112233)};
    EXPECT_EQ(onlyPlaceOf(plain, wall), std::nullopt);
}

class ListingTest : public testing::Test {
protected:
    ListingTest() {
        std::string pattern = fs::temp_directory_path().string() + "/listing-XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }
    ~ListingTest() override { fs::remove_all(folder_); }
    std::vector<std::string> names() {
        std::vector<std::string> found;
        for (const FolderEntry& entry : LinuxFolderWatches().list(folder_)) {
            EXPECT_TRUE(entry.created);
            found.push_back(fs::path(entry.path).filename());
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    // The names among all that were ever there.
    std::vector<std::string> looked() {
        std::vector<std::string> found;
        const auto entries =
            LinuxFolderWatches().look(folder_, {"half.png", ".hidden.png", "done.png", "gone.png", "empty.png"});
        for (const FolderEntry& entry : entries.value()) {
            EXPECT_TRUE(entry.created);
            found.push_back(fs::path(entry.path).filename());
        }
        return found;
    }
    std::string folder_;
};

TEST_F(ListingTest, LeavesOutWhatIsHiddenEmptyOrStillBeingWritten) {
    std::ofstream(folder_ + "/done.png") << "x";
    std::ofstream(folder_ + "/.hidden.png") << "x";
    std::ofstream(folder_ + "/empty.png") << "";
    const int writer = open((folder_ + "/half.png").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_EQ(write(writer, "x", 1), 1);
    EXPECT_EQ(names(), (std::vector<std::string>{"done.png"}));
    EXPECT_EQ(looked(), (std::vector<std::string>{"done.png"}));
    close(writer);
    EXPECT_EQ(names(), (std::vector<std::string>{"done.png", "half.png"}));
    EXPECT_EQ(looked(), (std::vector<std::string>{"half.png", "done.png"})) << "as asked";
}

TEST_F(ListingTest, AFolderThatIsNoneListsAsEmptyAndCannotBeOpened) {
    std::ofstream(folder_ + "/file") << "x";
    for (const char* name : {"/file", "/nowhere"}) {
        EXPECT_TRUE(LinuxFolderWatches().list(folder_ + name).empty());
        EXPECT_FALSE(LinuxFolderWatches().open(folder_ + name));
        EXPECT_FALSE(LinuxFolderWatches().look(folder_ + name, {"file"})) << "which isn't the same as empty";
    }
}

// A folder of this machine, watched.
class FolderWatchTest : public EventLoopFixture {
protected:
    FolderWatchTest() {
        watch_ = watches_.watch(watches_.open(folder_.path()), [this](const FolderChange& change) {
            names_.insert(names_.end(), change.names.begin(), change.names.end());
            everything_ = everything_ || change.everything;
        });
    }
    // The names told since the last call, without repetitions.
    std::vector<std::string> told(const std::string& last) {
        EXPECT_TRUE(until([&] { return std::find(names_.begin(), names_.end(), last) != names_.end(); }));
        auto names = std::exchange(names_, {});
        names.erase(std::unique(names.begin(), names.end()), names.end());
        return names;
    }
    void write(const std::string& name) const { std::ofstream(folder_ / name) << "x"; }

    TemporaryFolder folder_;
    LinuxFolderWatches watches_;
    Handle watch_;
    std::vector<std::string> names_;
    bool everything_ = false;
};

TEST_F(FolderWatchTest, ItSaysWhatCameWentAndWasFinished) {
    ASSERT_TRUE(watch_);
    write("a b.png");
    EXPECT_EQ(told("a b.png"), std::vector<std::string>{"a b.png"});
    fs::rename(folder_ / "a b.png", folder_ / "文字.png");
    EXPECT_EQ(told("文字.png"), (std::vector<std::string>{"a b.png", "文字.png"}));
    fs::remove(folder_ / "文字.png");
    fs::create_directory(folder_ / "inner");
    EXPECT_EQ(told("inner"), (std::vector<std::string>{"文字.png", "inner"}));
    EXPECT_FALSE(everything_);
}

TEST_F(FolderWatchTest, ItSaysWhenItLostCount) {
    std::ifstream limit("/proc/sys/fs/inotify/max_queued_events");
    int most = 0;
    ASSERT_TRUE(limit >> most);
    if (most > 20'000) {
        GTEST_SKIP() << "this machine counts very far";
    }
    for (int i = 0; i <= most / 2; ++i) { // each comes and is finished
        write(std::to_string(i));
    }
    EXPECT_TRUE(until([&] { return everything_; }, 20'000));
}

} // namespace

} // namespace rb
