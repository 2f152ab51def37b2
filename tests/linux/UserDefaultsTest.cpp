#include "desktops/linux/UserDefaults.h"

#include "desktops/virtual/RunLoop.h"
#include "tests/linux/LinuxFixture.h"

#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class UserDefaultsTest : public testing::Test {
protected:
    UserDefaultsTest() { fs::create_directory(folder_); }

    LinuxUserDefaults& start() {
        defaults_.reset();
        return defaults_.emplace(folder_, loop_, log_);
    }
    void stop() { defaults_.reset(); }
    void turn() { loop_.advance(0); }
    std::vector<std::string> namesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            names.push_back(entry.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    TemporaryFolder home_;
    std::string folder_ = home_ / "rook-bay";
    std::string file_ = folder_ + "/defaults.json";
    VirtualRunLoop loop_;
    RecordingLog log_;
    std::optional<LinuxUserDefaults> defaults_;
};

TEST_F(UserDefaultsTest, ValuesOutliveTheProgramInAPrivateFile) {
    fs::remove(folder_);
    folder_ = home_ / "new/config/rook-bay";
    start().setObject("HotKeyCode", 105);
    defaults_->setObject("HotKeyDisplay", "F13");
    stop(); // nothing is lost at quit
    LinuxUserDefaults& again = start();
    EXPECT_EQ(again.integerForKey("HotKeyCode"), 105);
    EXPECT_EQ(again.stringForKey("HotKeyDisplay"), "F13");
    struct stat status {};
    ASSERT_EQ(stat((folder_ + "/defaults.json").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    ASSERT_EQ(stat(folder_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    EXPECT_THAT(namesInFolder(), ElementsAre("defaults.json")) << "no temporary files stay";
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(UserDefaultsTest, ChangesOfOneTurnAreOneWriting) {
    LinuxUserDefaults& defaults = start();
    defaults.setObject("a", 1);
    defaults.setObject("b", 2);
    EXPECT_FALSE(fs::exists(file_));
    turn();
    struct stat first {};
    ASSERT_EQ(stat(file_.c_str(), &first), 0);
    defaults.setObject("a", 1); // as it is
    defaults.removeObject("unknown");
    turn();
    struct stat second {};
    ASSERT_EQ(stat(file_.c_str(), &second), 0);
    EXPECT_EQ(first.st_ino, second.st_ino) << "nothing changed, nothing is written";
    defaults.removeObject("a");
    turn();
    EXPECT_EQ(readText(file_), "{\n  \"b\": 2\n}\n");
}

TEST_F(UserDefaultsTest, KeysOfOthersAndEditsInBetweenAreKept) {
    writeText(file_, R"({"LinuxLockCommand": "slock", "FutureKey": {"$data": "AAEC"}, "HotKeyCode": 105})");
    LinuxUserDefaults& defaults = start();
    defaults.setObject("HotKeyCode", 107);
    turn();
    EXPECT_THAT(readText(file_), HasSubstr("AAEC"));
    // The user edits the file while the program runs.
    writeText(file_, R"({"LinuxLockCommand": "i3lock -n", "HotKeyCode": 111, "FutureKey": 1})");
    defaults.setObject("ClipboardPaused", true);
    turn();
    EXPECT_EQ(defaults.stringForKey("LinuxLockCommand"), "i3lock -n");
    EXPECT_EQ(defaults.integerForKey("HotKeyCode"), 111);
    EXPECT_THAT(readText(file_), HasSubstr("\"ClipboardPaused\": true"));
    EXPECT_THAT(readText(file_), HasSubstr("i3lock -n"));
}

TEST_F(UserDefaultsTest, ABrokenFileIsSetAsideAndNeverOverwritesAnother) {
    for (const char* text : {"{\"HotKeyCode\": 1", "\0\0\0", "[]"}) {
        writeText(file_, text);
        LinuxUserDefaults& defaults = start();
        EXPECT_FALSE(defaults.objectForKey("HotKeyCode"));
        EXPECT_FALSE(fs::exists(file_));
    }
    const auto names = namesInFolder();
    ASSERT_EQ(names.size(), 3U) << "also within the same second";
    EXPECT_THAT(names.front(), testing::MatchesRegex("defaults\\.json\\.broken-[0-9]+T[0-9]+Z"));
    EXPECT_EQ(readText(folder_ + "/" + names.front()), "{\"HotKeyCode\": 1");
    ASSERT_EQ(log_.lines().size(), 3U);
    EXPECT_THAT(log_.lines().front(), HasSubstr(names.front()));
    defaults_->setObject("HotKeyCode", 5);
    stop();
    EXPECT_EQ(start().integerForKey("HotKeyCode"), 5);
}

TEST_F(UserDefaultsTest, LinksAreFollowedAmongTheUsersOwnFilesOnly) {
    const std::string collection = home_ / "dotfiles";
    fs::create_directory(collection);
    writeText(collection + "/rook.json", R"({"a": 1})");
    fs::create_symlink(collection + "/rook.json", file_);
    LinuxUserDefaults& defaults = start();
    EXPECT_EQ(defaults.integerForKey("a"), 1);
    defaults.setObject("a", 2);
    turn();
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_THAT(readText(collection + "/rook.json"), HasSubstr("\"a\": 2"));
    EXPECT_THAT(log_.lines(), IsEmpty());
    stop();

    fs::remove(file_);
    fs::create_symlink("/proc/sys/kernel/hostname", file_); // a file of the system's
    start().setObject("a", 3);
    turn();
    EXPECT_EQ(defaults_->integerForKey("a"), 3) << "it holds for this run";
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("memory only")));
}

TEST_F(UserDefaultsTest, WhatIsNoPlainFileIsLeftAlone) {
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    start().setObject("a", 1); // doesn't wait for a writer
    turn();
    EXPECT_TRUE(fs::is_fifo(file_));
    fs::remove(file_);
    fs::create_directory(file_);
    start().setObject("a", 1);
    turn();
    EXPECT_TRUE(fs::is_directory(file_));
    fs::remove(file_);
    fs::create_symlink(folder_ + "/nowhere", file_);
    start().setObject("a", 1);
    turn();
    EXPECT_FALSE(fs::exists(folder_ + "/nowhere"));
    fs::remove_all(folder_);
    writeText(folder_, "a file where the folder should be");
    start().setObject("a", 1);
    turn();
    EXPECT_EQ(readText(folder_), "a file where the folder should be");
    EXPECT_EQ(log_.lines().size(), 4U) << "each reason is told once";
}

// Root may read and write everywhere, so permissions are tested as another user where the test runs as root.
class PermissionsTest : public UserDefaultsTest {
protected:
    PermissionsTest() {
        if (geteuid() == 0) {
            constexpr uid_t nobody = 65534;
            fs::permissions(home_.path(), fs::perms::all);
            EXPECT_EQ(chown(folder_.c_str(), nobody, static_cast<gid_t>(-1)), 0);
            EXPECT_EQ(seteuid(nobody), 0);
            becameNobody_ = true;
        }
    }
    ~PermissionsTest() override {
        stop();
        if (becameNobody_) {
            EXPECT_EQ(seteuid(0), 0);
        }
    }
    bool becameNobody_ = false;
};

TEST_F(PermissionsTest, AFileThatCannotBeReadIsNeverOverwritten) {
    writeText(file_, R"({"a": 1})");
    fs::permissions(file_, fs::perms::none);
    LinuxUserDefaults& defaults = start();
    defaults.setObject("a", 2);
    turn();
    EXPECT_EQ(defaults.integerForKey("a"), 2);
    fs::permissions(file_, fs::perms::owner_read);
    EXPECT_EQ(readText(file_), R"({"a": 1})");
    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("memory only")));
}

TEST_F(PermissionsTest, AReadOnlyFolderIsToldOnceAndMayRecover) {
    writeText(file_, R"({"a": 1})");
    LinuxUserDefaults& defaults = start();
    fs::permissions(folder_, fs::perms::owner_read | fs::perms::owner_exec);
    defaults.setObject("a", 2);
    turn();
    defaults.setObject("b", 3);
    turn();
    EXPECT_EQ(defaults.integerForKey("a"), 2);
    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("cannot write")));
    fs::permissions(folder_, fs::perms::owner_all);
    defaults.setObject("c", 4);
    turn();
    EXPECT_EQ(readText(file_), "{\n  \"a\": 2,\n  \"b\": 3,\n  \"c\": 4\n}\n");
}

TEST_F(PermissionsTest, SomeoneElsesFolderOrFileIsNeitherReadNorReplaced) {
    if (!becameNobody_) {
        GTEST_SKIP() << "needs root to give files away";
    }
    ASSERT_EQ(seteuid(0), 0);
    writeText(file_, R"({"LinuxLockCommand": "evil"})");
    fs::permissions(file_, fs::perms::all);
    ASSERT_EQ(seteuid(65534), 0);
    LinuxUserDefaults& defaults = start();
    EXPECT_FALSE(defaults.objectForKey("LinuxLockCommand"));
    defaults.setObject("a", 1);
    turn();
    EXPECT_EQ(readText(file_), R"({"LinuxLockCommand": "evil"})");
    ASSERT_EQ(seteuid(0), 0);
    fs::permissions(folder_, fs::perms::all);
    ASSERT_EQ(chown(folder_.c_str(), 0, static_cast<gid_t>(-1)), 0);
    fs::remove(file_);
    ASSERT_EQ(seteuid(65534), 0);
    start().setObject("a", 1);
    turn();
    EXPECT_FALSE(fs::exists(file_));
    EXPECT_EQ(log_.lines().size(), 2U);
}

} // namespace

} // namespace rb
