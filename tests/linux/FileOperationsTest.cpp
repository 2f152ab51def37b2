#include "desktops/linux/FileOperations.h"

#include "desktops/linux/CopyNotes.h"
#include "desktops/linux/RunLoop.h"
#include "tests/linux/LinuxFixture.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;

// Two folders, which lie on different file systems where the machine has two that can be written to.
class FileOperationsTest : public EventLoopFixture {
protected:
    FileOperationsTest() {
        std::string made = fs::temp_directory_path().string() + "/rookbay-files-XXXXXX";
        here = mkdtemp(made.data());
        made = "/dev/shm/rookbay-files-XXXXXX";
        const char* other = mkdtemp(made.data());
        there = other ? other : here;
    }
    ~FileOperationsTest() override {
        for (const fs::path& folder : {here, there}) {
            std::error_code ignored;
            fs::remove_all(folder, ignored);
        }
    }
    bool twoFileSystems() const {
        struct stat a {};
        struct stat b {};
        return stat(here.c_str(), &a) == 0 && stat(there.c_str(), &b) == 0 && a.st_dev != b.st_dev;
    }
    static void write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }
    static std::string read(const fs::path& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    // Nothing of ours may be left beside what was asked for.
    static std::size_t entries(const fs::path& folder) {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
    }
    void makeTree(const fs::path& root) {
        fs::create_directories(root / "inner" / "empty");
        write(root / "a", std::string(200'000, 'x'));
        write(root / "inner" / "中文.txt", "text");
        fs::create_symlink("nowhere", root / "dangling");
        fs::permissions(root / "a", fs::perms::owner_read);
    }

    // What came of it in the end.
    std::optional<FileFailure> outcomeOf(const std::function<void(FileOperations::Done)>& begin) {
        bool told = false;
        std::optional<FileFailure> outcome;
        begin([&](const std::optional<FileFailure>& failure) {
            told = true;
            outcome = failure;
        });
        EXPECT_TRUE(until([&] { return told; }, 20'000));
        return outcome;
    }
    std::optional<FileFailure> moveItem(const fs::path& from, const fs::path& to) {
        return outcomeOf([&](FileOperations::Done done) { operations->moveItem(from, to, std::move(done)); });
    }
    std::optional<FileFailure> copyItem(const fs::path& from, const fs::path& to) {
        return outcomeOf([&](FileOperations::Done done) { operations->copyItem(from, to, std::move(done)); });
    }
    std::optional<FileFailure> trashItem(const fs::path& path) {
        return outcomeOf([&](FileOperations::Done done) { operations->trashItem(path, std::move(done)); });
    }

    RecordingLog log;
    LinuxRunLoop loop{log};
    std::unique_ptr<LinuxFileOperations> operations = std::make_unique<LinuxFileOperations>(loop);
    fs::path here;
    fs::path there;
};

TEST_F(FileOperationsTest, NothingThatExistsIsEverReplaced) {
    write(here / "from", "new");
    write(here / "to", "old");
    fs::create_symlink("nowhere", here / "link");
    fs::create_directory(here / "folder");
    fs::create_directory(here / "moved");
    for (const char* target : {"to", "link", "folder"}) {
        for (const char* source : {"from", "moved"}) {
            const auto moved = moveItem(here / source, here / target);
            ASSERT_TRUE(moved) << source << " over " << target;
            EXPECT_TRUE(moved->targetExists);
            const auto copied = copyItem(here / source, here / target);
            ASSERT_TRUE(copied);
            EXPECT_TRUE(copied->targetExists);
        }
    }
    EXPECT_EQ(read(here / "to"), "old");
    EXPECT_EQ(read(here / "from"), "new");
    EXPECT_EQ(entries(here), 5U);
}

TEST_F(FileOperationsTest, ATreeMovesToAnotherFileSystemWhole) {
    if (!twoFileSystems()) {
        GTEST_SKIP() << "this machine has one file system only";
    }
    makeTree(here / "tree");
    const auto written = fs::last_write_time(here / "tree" / "a");
    EXPECT_FALSE(moveItem(here / "tree", there / "tree"));
    EXPECT_FALSE(fs::exists(here / "tree"));
    EXPECT_EQ(read(there / "tree" / "a"), std::string(200'000, 'x'));
    EXPECT_EQ(read(there / "tree" / "inner" / "中文.txt"), "text");
    EXPECT_TRUE(fs::is_directory(there / "tree" / "inner" / "empty"));
    EXPECT_EQ(fs::read_symlink(there / "tree" / "dangling"), "nowhere");
    EXPECT_EQ(fs::status(there / "tree" / "a").permissions(), fs::perms::owner_read);
    EXPECT_EQ(fs::last_write_time(there / "tree" / "a"), written);
    EXPECT_EQ(entries(there), 1U);
}

TEST_F(FileOperationsTest, WhatCanNotBeCopiedWholeIsLeftWhole) {
    makeTree(here / "tree");
    ASSERT_EQ(mkfifo((here / "tree" / "pipe").c_str(), 0600), 0);
    const auto moved =
        twoFileSystems() ? moveItem(here / "tree", there / "tree") : copyItem(here / "tree", there / "copy");
    ASSERT_TRUE(moved);
    EXPECT_FALSE(moved->reason.empty());
    EXPECT_EQ(read(here / "tree" / "a").size(), 200'000U);
    EXPECT_TRUE(fs::exists(here / "tree" / "inner" / "中文.txt"));
    EXPECT_FALSE(fs::exists(there / "tree"));
    if (twoFileSystems()) {
        EXPECT_EQ(entries(there), 0U) << "no half copy stays";
    }
}

TEST_F(FileOperationsTest, AFullDiskOrAMissingFolderLosesNothing) {
    write(here / "file", "text");
    EXPECT_TRUE(moveItem(here / "file", here / "missing" / "file"));
    EXPECT_TRUE(copyItem(here / "file", "/proc/file"));
    EXPECT_EQ(read(here / "file"), "text");
    // A file system of two pages, where the machine lets us have one.
    const fs::path small = here / "small";
    fs::create_directory(small);
    if (mount("none", small.c_str(), "tmpfs", 0, "size=8k") != 0) {
        return;
    }
    write(here / "large", std::string(100'000, 'y'));
    const auto failure = moveItem(here / "large", small / "large");
    EXPECT_TRUE(failure);
    EXPECT_EQ(read(here / "large").size(), 100'000U);
    EXPECT_EQ(entries(small), 0U);
    umount(small.c_str());
}

TEST_F(FileOperationsTest, AFolderNeverGoesIntoItself) {
    makeTree(here / "tree");
    EXPECT_TRUE(moveItem(here / "tree", here / "tree" / "inner" / "tree"));
    EXPECT_TRUE(copyItem(here / "tree", here / "tree" / "inner" / "tree"));
    EXPECT_EQ(entries(here / "tree" / "inner"), 2U);
}

TEST_F(FileOperationsTest, TheTrashKeepsWhereAFileCameFrom) {
    const fs::path home = here / "home";
    fs::create_directory(home);
    const char* before = std::getenv("XDG_DATA_HOME");
    const std::optional<std::string> dataHome = before ? std::optional<std::string>(before) : std::nullopt;
    setenv("XDG_DATA_HOME", home.c_str(), 1);
    write(here / "文件 1.txt", "text");
    write(here / "second", "text");
    EXPECT_FALSE(trashItem(here / "文件 1.txt"));
    EXPECT_FALSE(fs::exists(here / "文件 1.txt"));
    const fs::path trash = home / "Trash";
    EXPECT_EQ(read(trash / "files" / "文件 1.txt"), "text");
    EXPECT_NE(read(trash / "info" / "文件 1.txt.trashinfo").find("/%E6%96%87%E4%BB%B6%201.txt\nDeletionDate=2"),
              std::string::npos);
    // Namesakes keep their own places, links go as links, and a long name fits.
    write(here / "文件 1.txt", "another");
    EXPECT_FALSE(trashItem(here / "文件 1.txt"));
    EXPECT_EQ(read(trash / "files" / "文件 1.txt"), "text");
    EXPECT_EQ(read(trash / "files" / "文件 1.txt.2"), "another");
    fs::create_symlink("second", here / "link");
    EXPECT_FALSE(trashItem(here / "link"));
    EXPECT_TRUE(fs::exists(here / "second"));
    const std::string longest(255, 'n');
    write(here / longest, "long");
    EXPECT_FALSE(trashItem(here / longest));
    EXPECT_FALSE(fs::exists(here / longest));
    EXPECT_EQ(entries(trash / "files"), 4U);
    EXPECT_EQ(entries(trash / "info"), 4U);
    if (twoFileSystems()) {
        write(there / "far", "far");
        EXPECT_FALSE(trashItem(there / "far"));
        const fs::path own = "/dev/shm/.Trash-" + std::to_string(getuid());
        EXPECT_EQ(read(own / "files" / "far"), "far");
        EXPECT_NE(read(own / "info" / "far.trashinfo").find("Path=" + there.filename().string() + "/far"),
                  std::string::npos);
        fs::remove(own / "files" / "far");
        fs::remove(own / "info" / "far.trashinfo");
    }
    const auto missing = trashItem(here / "nothing");
    if (dataHome) {
        setenv("XDG_DATA_HOME", dataHome->c_str(), 1);
    } else {
        unsetenv("XDG_DATA_HOME");
    }
    ASSERT_TRUE(missing);
    EXPECT_FALSE(missing->reason.empty());
}

TEST_F(FileOperationsTest, QuittingInTheMiddleLeavesTheSourceWholeAndNoHalfFile) {
    if (!twoFileSystems()) {
        GTEST_SKIP() << "this machine has one file system only";
    }
    constexpr std::uintmax_t size = 256U << 20U;
    write(here / "large", "beginning");
    fs::resize_file(here / "large", size);
    bool told = false;
    operations->moveItem(here / "large", there / "large", [&](const std::optional<FileFailure>&) { told = true; });
    operations->copyItem(here / "large", here / "second", [&](const std::optional<FileFailure>&) { told = true; });
    EXPECT_FALSE(told) << "the main thread goes on meanwhile";
    const auto written = [&] {
        std::uintmax_t bytes = 0;
        std::error_code vanished;
        for (const auto& entry : fs::recursive_directory_iterator(there, vanished)) {
            bytes += entry.is_regular_file(vanished) ? entry.file_size(vanished) : 0;
        }
        return bytes;
    };
    ASSERT_TRUE(until([&] { return written() > size / 50; }));
    ASSERT_FALSE(told);
    operations.reset();
    EXPECT_EQ(entries(there), 0U);
    EXPECT_EQ(entries(here), 1U) << "nor of the copy that hadn't begun";
    EXPECT_EQ(fs::file_size(here / "large"), size);
    until([&] { return told; }, 50);
    EXPECT_FALSE(fs::exists(there / "large"));
}

TEST_F(FileOperationsTest, AnOpenedFileIsReadAsItWasOrNotAtAll) {
    constexpr std::size_t most = 3'000'000;
    const std::atomic<bool> wanted = false;
    const std::atomic<bool> givenUp = true;
    const auto contents = [&](const std::shared_ptr<const OpenedFile>& file) {
        const SharedBytes bytes = file->contents(wanted);
        return bytes ? std::string(bytes->begin(), bytes->end()) : "nothing";
    };
    const std::string large(most, 'x');
    write(here / "a", large);
    const auto open = [&](const fs::path& path) { return operations->open(path, most); };
    const auto moved = open(here / "a");
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved->contents(givenUp), nullptr);
    fs::rename(here / "a", here / "b");
    write(here / "a", "another file");
    EXPECT_EQ(contents(moved), large) << "whatever has its name now";
    const auto removed = open(here / "b");
    fs::remove(here / "b");
    EXPECT_EQ(contents(removed), large);

    const auto grown = open(here / "a");
    std::ofstream(here / "a", std::ios::app) << "+";
    EXPECT_EQ(contents(grown), "nothing");
    const auto shorter = open(here / "a");
    fs::resize_file(here / "a", 3);
    EXPECT_EQ(contents(shorter), "nothing");
    const auto touched = open(here / "a");
    fs::last_write_time(here / "a", fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_EQ(contents(touched), "nothing");
    EXPECT_EQ(contents(open(here / "a")), "ano");

    write(here / "larger", large + "x");
    EXPECT_EQ(open(here / "larger"), nullptr);
    EXPECT_EQ(open(here), nullptr) << "a folder";
    EXPECT_EQ(open(here / "missing"), nullptr);
    ASSERT_EQ(mkfifo((here / "pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    EXPECT_EQ(open(here / "pipe"), nullptr) << "and nobody is waited for";
}

TEST_F(FileOperationsTest, TheNextStartRemovesWhatAKilledCopyLeft) {
    const fs::path home = here / "home";
    fs::create_directory(home);
    const char* before = std::getenv("XDG_DATA_HOME");
    const std::optional<std::string> dataHome = before ? std::optional<std::string>(before) : std::nullopt;
    setenv("XDG_DATA_HOME", home.c_str(), 1);
    const std::string left = makeCopyFolder(there);
    makeTree(fs::path(left) / "copy");
    fs::create_directory(there / ".rookbay-notours");
    // A note that doesn't name such a folder removes nothing.
    makeTree(here / "mine");
    fs::create_symlink(here / "mine", home / "rook-bay" / "copies" / "mine");
    fs::create_symlink(here / "mine", home / "rook-bay" / "copies" / ".rookbay-mine");
    operations = std::make_unique<LinuxFileOperations>(loop);
    EXPECT_TRUE(until([&] { return !fs::exists(left); }));
    operations.reset();
    EXPECT_TRUE(fs::exists(there / ".rookbay-notours"));
    EXPECT_EQ(read(here / "mine" / "a").size(), 200'000U);
    EXPECT_FALSE(fs::is_symlink(home / "rook-bay" / "copies" / fs::path(left).filename()));
    if (dataHome) {
        setenv("XDG_DATA_HOME", dataHome->c_str(), 1);
    } else {
        unsetenv("XDG_DATA_HOME");
    }
}

} // namespace
} // namespace rb
