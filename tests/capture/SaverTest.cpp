#include "helpers/capture/Saver.h"
#include "desktops/linux/CaptureAttributes.h"
#include "desktops/linux/FolderWatches.h"
#include "desktops/linux/UniqueFd.h"
#include "tests/linux/LinuxFixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sys/mount.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;

class CaptureSaverTest : public testing::Test {
protected:
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            found.push_back(entry.path().filename());
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    TemporaryFolder temporary_;
    std::string folder_ = temporary_.path();
};

TEST_F(CaptureSaverTest, CarriesMarkAndRectangleAsTheReaderWantsThem) {
    const double tiny = std::numeric_limits<double>::denorm_min();
    for (const Rect& taken : {Rect{100, 50, 640.5, 480}, Rect{-3840, -2160.25, 1e9, tiny}}) {
        const SavedCapture saved = saveCapture(folder_, "截屏", "png", {.bytes = "picture", .taken = taken});
        ASSERT_EQ(saved.error, "");
        EXPECT_EQ(readText(saved.path), "picture");
        EXPECT_TRUE(readAttribute(saved.path, captureMarkAttribute));
        const auto rectangle = readAttribute(saved.path, captureRectAttribute);
        ASSERT_TRUE(rectangle);
        EXPECT_TRUE(rectangle->starts_with("bplist00"));
        EXPECT_EQ(numbersOfPropertyList(*rectangle), (PropertyArray{taken.x, taken.y, taken.width, taken.height}));
    }
    const SavedCapture bare = saveCapture(folder_, "bare", "png", {.bytes = "x"});
    EXPECT_TRUE(readAttribute(bare.path, captureMarkAttribute));
    EXPECT_FALSE(readAttribute(bare.path, captureRectAttribute));
    struct stat status {};
    ASSERT_EQ(stat(bare.path.c_str(), &status), 0);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(status.st_mode & 0777, 0666 & ~mask) << "a document as any other";
}

TEST_F(CaptureSaverTest, WhateverHasTheNameStays) {
    std::ofstream(folder_ + "/shot.png") << "the user's";
    fs::create_symlink(folder_ + "/nowhere", folder_ + "/shot (2).png");
    fs::create_directory(folder_ + "/shot (3).png");
    const SavedCapture saved = saveCapture(folder_, "shot", "png", {.bytes = "ours"});
    EXPECT_EQ(saved.path, folder_ + "/shot (4).png");
    EXPECT_EQ(readText(folder_ + "/shot.png"), "the user's");
    EXPECT_FALSE(fs::exists(folder_ + "/nowhere")) << "no link is followed";
    // Many at once: every one is there afterwards.
    std::vector<std::thread> others;
    for (int i = 0; i < 8; ++i) {
        others.emplace_back([this, i] {
            for (int each = 0; each < 10; ++each) {
                saveCapture(folder_, "many", "png", {.bytes = std::string(1000, static_cast<char>('a' + i))});
            }
        });
    }
    for (std::thread& other : others) {
        other.join();
    }
    int whole = 0;
    for (const auto& entry : fs::directory_iterator(folder_)) {
        if (entry.path().filename().string().starts_with("many")) {
            const std::string text = readText(entry.path());
            whole += text.size() == 1000 && text.find_first_not_of(text[0]) == std::string::npos ? 1 : 0;
        }
    }
    EXPECT_EQ(whole, 80);
}

TEST_F(CaptureSaverTest, IsCompleteTheMomentItHasItsName) {
    std::atomic<bool> done = false;
    int seen = 0;
    std::thread watcher([&] {
        while (!done) {
            for (const FolderEntry& entry : LinuxFolderWatches().list(folder_)) {
                // Held open, because it goes again soon.
                const UniqueFd held(open(entry.path.c_str(), O_RDONLY | O_CLOEXEC));
                if (!held) {
                    continue;
                }
                const std::string path = "/proc/self/fd/" + std::to_string(held.get());
                EXPECT_EQ(readText(path).size(), 300'000U) << entry.path;
                EXPECT_TRUE(readAttribute(path, captureMarkAttribute));
                ++seen;
            }
        }
    });
    for (int i = 0; i < 40; ++i) {
        const SavedCapture saved = saveCapture(folder_, "shot", "png", {.bytes = std::string(300'000, 'x')});
        EXPECT_NE(saved.path, "");
        fs::remove(saved.path);
    }
    saveCapture(folder_, "last", "png", {.bytes = std::string(300'000, 'x')});
    while (seen == 0) {
        std::this_thread::yield();
    }
    done = true;
    watcher.join();
    // Listed at once: nobody has it open for writing any more.
    EXPECT_EQ(LinuxFolderWatches().list(folder_).size(), 1U);
}

TEST_F(CaptureSaverTest, AFolderThatTakesNothingKeepsNothing) {
    std::ofstream(folder_ + "/file") << "x";
    for (const std::string& wrong : {folder_ + "/none", folder_ + "/file", std::string("/proc/self")}) {
        const SavedCapture saved = saveCapture(wrong, "shot", "png", {.bytes = "x"});
        EXPECT_EQ(saved.path, "");
        EXPECT_NE(saved.error, "");
    }
    const SavedCapture tooLong = saveCapture(folder_, std::string(400, 'x'), "png", {.bytes = "x"});
    EXPECT_EQ(tooLong.error, "文件名太长");
    EXPECT_EQ(names(), std::vector<std::string>{"file"});
}

TEST_F(CaptureSaverTest, AFullDiskLeavesNothingBehind) {
    if (mount("none", folder_.c_str(), "tmpfs", 0, "size=256k") != 0) {
        GTEST_SKIP() << "mounting needs root";
    }
    const SavedCapture saved = saveCapture(folder_, "shot", "png", {.bytes = std::string(1'000'000, 'x')});
    EXPECT_EQ(saved.error, "磁盘空间不足");
    EXPECT_TRUE(names().empty());
    const SavedCapture small = saveCapture(folder_, "shot", "png", {.bytes = std::string(100'000, 'x')});
    EXPECT_EQ(names(), std::vector<std::string>{"shot.png"}) << small.error;
    umount(folder_.c_str());
}

} // namespace

} // namespace rb
