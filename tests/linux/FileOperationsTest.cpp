#include "desktops/linux/FileOperations.h"

#include "desktops/linux/CopyNotes.h"
#include "desktops/linux/RunLoop.h"
#include "desktops/linux/TreeCopy.h"
#include "tests/linux/LinuxFixture.h"
#include "tests/linux/Variable.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <system_error>
#include <unistd.h>

namespace {

// As on file systems of memory sticks and servers that know neither of these.
bool plainRenamesOnly = false;

} // namespace

extern "C" {

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    using Call = int (*)(int, const char*, int, const char*, unsigned);
    static const auto real = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "renameat2"));
    if (plainRenamesOnly && flags != 0) {
        errno = EINVAL;
        return -1;
    }
    return real(fromFolder, from, toFolder, to, flags);
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    using Call = int (*)(int, const char*, int, const char*, int);
    static const auto real = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "linkat"));
    if (plainRenamesOnly) {
        errno = EPERM;
        return -1;
    }
    return real(fromFolder, from, toFolder, to, flags);
}

} // extern "C"

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

TEST_F(FileOperationsTest, AFolderIsNeverCopiedIntoItselfByWayOfALink) {
    makeTree(here / "tree");
    fs::create_directory_symlink(here / "tree" / "inner", here / "inside");
    const auto copied = copyItem(here / "tree", here / "inside" / "tree");
    ASSERT_TRUE(copied);
    EXPECT_EQ(copied->reason, std::generic_category().message(EINVAL)) << "not after hundreds of copies";
    EXPECT_TRUE(moveItem(here / "tree", here / "inside" / "tree"));
    EXPECT_EQ(entries(here / "tree" / "inner"), 2U);
}

TEST_F(FileOperationsTest, WhereNothingIsExclusiveStillNothingIsReplaced) {
    write(here / "file", "new");
    write(here / "taken", "old");
    makeTree(here / "tree");
    plainRenamesOnly = true;
    const auto overTaken = moveItem(here / "file", here / "taken");
    const auto intoNothing = moveItem(here / "file", here / "missing" / "file");
    const auto moved = moveItem(here / "file", here / "moved");
    const auto folder = moveItem(here / "tree", here / "wood");
    const auto copied = copyItem(here / "moved", here / "copied");
    plainRenamesOnly = false;
    ASSERT_TRUE(overTaken);
    EXPECT_TRUE(overTaken->targetExists);
    EXPECT_EQ(read(here / "taken"), "old");
    EXPECT_TRUE(intoNothing);
    EXPECT_FALSE(moved) << moved->reason;
    EXPECT_FALSE(folder) << folder->reason;
    EXPECT_FALSE(copied) << copied->reason;
    EXPECT_EQ(read(here / "moved"), "new");
    EXPECT_EQ(read(here / "copied"), "new");
    EXPECT_EQ(read(here / "wood" / "inner" / "中文.txt"), "text");
    EXPECT_EQ(entries(here), 4U);
}

TEST_F(FileOperationsTest, HolesStayHoles) {
    // A disk image of which little was ever written.
    constexpr std::uintmax_t size = 64U << 20U;
    write(there / "image", "beginning");
    fs::resize_file(there / "image", size);
    {
        std::fstream file(there / "image", std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(size / 2);
        file << "middle";
    }
    struct stat source {};
    struct stat made {};
    ASSERT_EQ(stat((there / "image").c_str(), &source), 0);
    if (source.st_blocks * 512 > off_t{1} << 20) {
        GTEST_SKIP() << "this file system has no files with holes";
    }
    EXPECT_FALSE(copyItem(there / "image", there / "copy"));
    ASSERT_EQ(stat((there / "copy").c_str(), &made), 0);
    EXPECT_EQ(made.st_size, source.st_size);
    EXPECT_LT(made.st_blocks * 512, off_t{1} << 20);
    EXPECT_EQ(read(there / "copy"), read(there / "image"));
}

TEST_F(FileOperationsTest, WhoMayUseAFileStaysTheSame) {
    // Version 2: the owner reads and writes, user 1 reads and writes, the group nothing, all of them at most both.
    const std::string list("\x02\0\0\0"
                           "\x01\0\x06\0\xff\xff\xff\xff"
                           "\x02\0\x06\0\x01\0\0\0"
                           "\x04\0\0\0\xff\xff\xff\xff"
                           "\x10\0\x06\0\xff\xff\xff\xff"
                           "\x20\0\0\0\xff\xff\xff\xff",
                           44);
    const char* name = "system.posix_acl_access";
    write(there / "shared", "text");
    if (setxattr((there / "shared").c_str(), name, list.data(), list.size(), 0) != 0) {
        GTEST_SKIP() << "no such lists on this file system";
    }
    EXPECT_FALSE(copyItem(there / "shared", there / "copy"));
    std::string copied(list.size(), '\0');
    EXPECT_EQ(getxattr((there / "copy").c_str(), name, copied.data(), copied.size()),
              static_cast<ssize_t>(list.size()));
    EXPECT_EQ(copied, list);
    struct stat facts {};
    const int privileged = open((there / "someone's program").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0700);
    ASSERT_EQ(fchown(privileged, 1, 1), 0);
    ASSERT_EQ(fchmod(privileged, 06755), 0);
    close(privileged);
    EXPECT_FALSE(copyItem(there / "someone's program", there / "program"));
    ASSERT_EQ(stat((there / "program").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777, 02755U) << "it would run as us";
    EXPECT_EQ(facts.st_gid, 1U);
}

// What root may do is nothing that a user's program may.
TEST_F(FileOperationsTest, FoldersThatMayNotBeWrittenAreCopiedAndLeaveNothingHalf) {
    makeTree(here / "disc");
    fs::permissions(here / "disc" / "inner", fs::perms::owner_read | fs::perms::owner_exec);
    fs::permissions(here / "disc", fs::perms::owner_read | fs::perms::owner_exec);
    constexpr uid_t nobody = 65534;
    const auto give = [](const fs::path& path) {
        EXPECT_EQ(lchown(path.c_str(), nobody, static_cast<gid_t>(-1)), geteuid() == 0 ? 0 : -1);
    };
    give(here);
    give(here / "disc");
    for (const auto& entry : fs::recursive_directory_iterator(here / "disc")) {
        give(entry.path());
    }
    const bool root = geteuid() == 0;
    if (root) {
        ASSERT_EQ(seteuid(nobody), 0);
    }
    const auto copied = copyItem(here / "disc", here / "copy");
    const std::atomic<bool> goOn = false;
    TreeCopy given(goOn);
    const int made = given.make(here / "disc", here / "given up");
    given.removeCopy();
    if (root) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_FALSE(copied) << copied->reason;
    EXPECT_EQ(fs::status(here / "copy").permissions(), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(fs::status(here / "copy" / "inner").permissions(), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(read(here / "copy" / "inner" / "中文.txt"), "text");
    EXPECT_EQ(made, 0);
    EXPECT_FALSE(fs::exists(here / "given up"));
    EXPECT_EQ(entries(here), 2U);
    for (const char* folder : {"disc", "copy"}) {
        fs::permissions(here / folder, fs::perms::owner_all);
        fs::permissions(here / folder / "inner", fs::perms::owner_all);
    }
}

TEST_F(FileOperationsTest, ACopyStaysWhenTheSourceWentMeanwhile) {
    write(here / "file", "text");
    const std::atomic<bool> goOn = false;
    TreeCopy copy(goOn);
    ASSERT_EQ(copy.make(here / "file", here / "copy"), 0);
    fs::remove(here / "file");
    EXPECT_EQ(copy.removeSource(), 0) << "or the move would take the copy back";
    // Something else at its place is nobody's to remove.
    TreeCopy again(goOn);
    ASSERT_EQ(again.make(here / "copy", here / "second"), 0);
    write(here / "other", "other");
    fs::rename(here / "other", here / "copy");
    EXPECT_NE(again.removeSource(), 0);
    EXPECT_EQ(read(here / "copy"), "other");
}

TEST_F(FileOperationsTest, TheTrashKeepsWhereAFileCameFrom) {
    const fs::path home = here / "home";
    fs::create_directory(home);
    const Variable dataHome("XDG_DATA_HOME", home);
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
    ASSERT_TRUE(missing);
    EXPECT_FALSE(missing->reason.empty());
}

TEST_F(FileOperationsTest, QuittingInTheMiddleLeavesTheSourceWholeAndNoHalfFile) {
    if (!twoFileSystems()) {
        GTEST_SKIP() << "this machine has one file system only";
    }
    constexpr std::uintmax_t size = 256U << 20U;
    write(here / "large", std::string(size, 'x')); // holes would be copied in no time
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
    const Variable dataHome("XDG_DATA_HOME", home);
    // Of a program that was killed; another one is at work.
    if (fork() == 0) {
        const CopyFolder killed(there);
        _exit(killed.path().empty() ? 1 : 0);
    }
    wait(nullptr);
    ASSERT_EQ(entries(there), 1U);
    const fs::path left = fs::directory_iterator(there)->path();
    makeTree(left / "copy");
    const CopyFolder inUse(there);
    writeText(inUse.path() + "/copy", "half");
    fs::create_directory(there / ".rookbay-notours");
    // A note that doesn't name such a folder removes nothing.
    makeTree(here / "mine");
    fs::create_symlink(here / "mine", home / "rook-bay" / "copies" / "mine");
    fs::create_symlink(here / "mine", home / "rook-bay" / "copies" / ".rookbay-mine");
    operations = std::make_unique<LinuxFileOperations>(loop);
    EXPECT_TRUE(until([&] { return !fs::exists(left); }));
    operations.reset();
    EXPECT_EQ(readText(inUse.path() + "/copy"), "half");
    fs::remove(inUse.path() + "/copy");
    EXPECT_TRUE(fs::exists(there / ".rookbay-notours"));
    EXPECT_EQ(read(here / "mine" / "a").size(), 200'000U);
    EXPECT_FALSE(fs::is_symlink(home / "rook-bay" / "copies" / left.filename()));
}

} // namespace
} // namespace rb
