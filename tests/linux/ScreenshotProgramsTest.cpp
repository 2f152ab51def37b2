#include "desktops/linux/IniText.h"
#include "desktops/linux/ProgramTakeover.h"
#include "desktops/virtual/Log.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;

TEST(IniTextTest, ChangesOneLineAndNothingElse) {
    const std::string text = "; mine\r\n[Other]\nsavePath=/no\n\n[General]\n a = 1 \nsavePath=/old\n\n[Last]\nb=2";
    EXPECT_EQ(iniValue(text, "General", "a"), "1");
    EXPECT_EQ(iniValue(text, "General", "savePath"), "/old");
    EXPECT_EQ(iniValue(text, "General", "b"), std::nullopt);
    const std::string changed = withIniValue(text, "General", "savePath", "/new");
    EXPECT_EQ(changed, "; mine\r\n[Other]\nsavePath=/no\n\n[General]\n a = 1 \nsavePath=/new\n\n[Last]\nb=2");
    EXPECT_EQ(withIniValue(changed, "General", "savePath", "/old"), text);
    EXPECT_EQ(withIniValue(text, "General", "new", "1"),
              "; mine\r\n[Other]\nsavePath=/no\n\n[General]\n a = 1 \nsavePath=/old\nnew=1\n\n[Last]\nb=2");
    EXPECT_EQ(withIniValue(withIniValue(text, "General", "new", "1"), "General", "new", std::nullopt), text);
    EXPECT_EQ(withIniValue("b=2", "Save", "x", "y"), "b=2\n[Save]\nx=y\n");
    EXPECT_EQ(withIniValue("[Save]\nx=1\n", "", "dir", "/a"), "dir=/a\n[Save]\nx=1\n");
    EXPECT_EQ(withIniValue("", "", "dir", "/a"), "dir=/a\n");
}

TEST(IniTextTest, EscapesAsQtReadsIt) {
    EXPECT_EQ(qtIniEscaped("/home/a b"), "/home/a b");
    EXPECT_EQ(qtIniEscaped("/截a"), "/\\x622a\\x61") << "the letter would be read as a digit";
    EXPECT_EQ(qtIniEscaped("/a,b=\"c\\"), "\"/a,b=\\\"c\\\\\"");
}

TEST(IniTextTest, UnderstandsWhatQtWrites) {
    for (const char* path : {"/home/a b", "/\xe6\x88\xaa/a", "/a,b=\"c\\",
                             "/\xe6\x88\xaa\xe5\x9b\xbe"
                             "1;2",
                             ""}) {
        EXPECT_EQ(qtIniUnescaped(qtIniEscaped(path)), path);
        EXPECT_EQ(qtIniUnescaped(path), std::string(path) == "/a,b=\"c\\" ? "/a,b=c\\" : path) << "plain UTF-8 too";
    }
}

// What the programs themselves make of the settings when they store them anew.
TEST(KnownProgramsTest, AreUndoneInOtherWordsToo) {
    const std::string folder = "/home/\xe6\x88\x91/Screenshots";
    const std::map<std::string, std::pair<std::string, std::string>> rewritten = {
        {"flameshot", {"[General]\nsavePath=" + folder + "\nsavePathFixed=true\n", "[General]\n"}},
        {"xfce4-screenshooter", {"screenshot_dir=file:" + folder + "\naction=1\n", "action=1\n"}},
        {"spectacle", {"[Save]\ndefaultSaveLocation=file://" + folder + "/\n", "[Save]\n"}}};
    int checked = 0;
    for (const auto& program : knownScreenshotPrograms()) {
        const auto found = rewritten.find(program->name());
        if (found != rewritten.end()) {
            const auto& [there, theirs] = found->second;
            EXPECT_EQ(program->undone(there, "", program->redirected("", folder)), theirs) << program->name();
            EXPECT_EQ(program->undone(theirs, "", program->redirected("", folder)), theirs);
            ++checked;
        }
    }
    EXPECT_EQ(checked, 3);
}

std::string url(const std::string& folder) {
    return "file://" + folder;
}

// Settings of two programs in a folder of their own.
class TakeoverTest : public testing::Test {
protected:
    TakeoverTest() {
        std::string pattern = fs::temp_directory_path().string() + "/takeover-XXXXXX";
        folder_ = mkdtemp(pattern.data());
        setenv("XDG_CONFIG_HOME", folder_.c_str(), 1);
        fs::create_directories(folder_ + "/bin");
        for (const char* name : {"one", "two"}) {
            const std::string program = folder_ + "/bin/" + name;
            std::ofstream(program) << "#!/bin/sh\n";
            fs::permissions(program, fs::perms::owner_all);
        }
        path_ = std::getenv("PATH");
        setenv("PATH", (folder_ + "/bin:" + path_).c_str(), 1);
    }
    ~TakeoverTest() override {
        setenv("PATH", path_.c_str(), 1);
        unsetenv("XDG_CONFIG_HOME");
        fs::remove_all(folder_);
    }

    std::unique_ptr<ProgramTakeover> takeover() {
        std::vector<std::unique_ptr<ScreenshotProgram>> programs;
        const auto yes = [](const std::string&) -> std::string { return "true"; };
        programs.push_back(std::make_unique<IniScreenshotProgram>(
            "one", "one/one.ini", "General",
            std::vector<IniScreenshotProgram::Value>{{"savePath", qtIniEscaped}, {"savePathFixed", yes}}));
        programs.push_back(std::make_unique<IniScreenshotProgram>(
            "two", "tworc", "", std::vector<IniScreenshotProgram::Value>{{"dir", url}}));
        programs.push_back(std::make_unique<IniScreenshotProgram>(
            "absent-program", "absentrc", "", std::vector<IniScreenshotProgram::Value>{{"dir", url}}));
        return std::make_unique<ProgramTakeover>(std::move(programs), journal(), log_);
    }
    std::string journal() const { return folder_ + "/rook-bay/screenshot-programs.json"; }
    std::string one() const { return folder_ + "/one/one.ini"; }
    std::string two() const { return folder_ + "/tworc"; }
    void write(const std::string& path, const std::string& text) {
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    std::optional<std::string> read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return file ? std::optional(std::string(std::istreambuf_iterator<char>(file), {})) : std::nullopt;
    }

    std::string folder_;
    std::string path_;
    VirtualLog log_;
};

const std::string settingsOfOne = "[General]\ncheck=1\nsavePath=/home/me/图\n\n[Shortcuts]\nx=y";

TEST_F(TakeoverTest, GivesBackByteForByteWhatWasThere) {
    write(one(), settingsOfOne);
    fs::permissions(one(), fs::perms{0640});
    takeover()->redirect("/ours");
    EXPECT_EQ(read(one()), "[General]\ncheck=1\nsavePath=/ours\nsavePathFixed=true\n\n[Shortcuts]\nx=y");
    EXPECT_EQ(fs::status(one()).permissions(), fs::perms{0640});
    EXPECT_EQ(read(two()), "dir=file:///ours\n");
    EXPECT_FALSE(read(folder_ + "/absentrc")) << "a program that isn't installed is left alone";
    EXPECT_EQ(fs::status(journal()).permissions(), fs::perms{0600});
    takeover()->redirect("/ours");
    takeover()->restore();
    EXPECT_EQ(read(one()), settingsOfOne);
    EXPECT_FALSE(read(two())) << "there was no file";
    EXPECT_FALSE(read(journal()));
}

TEST_F(TakeoverTest, WhatTheUserChangedMeanwhileStays) {
    write(one(), settingsOfOne);
    write(two(), "dir=file:///old\nother=1\n");
    takeover()->redirect("/ours");
    write(one(), "[General]\ncheck=2\nsavePath=/theirs\nsavePathFixed=true\n");
    write(two(), "dir=file:///ours\nother=2\n");
    takeover()->restore();
    EXPECT_EQ(read(one()), "[General]\ncheck=2\nsavePath=/theirs\n");
    EXPECT_EQ(read(two()), "dir=file:///old\nother=2\n");

    takeover()->redirect("/ours");
    fs::remove(two());
    write(one(), "[General]\nsavePath=/newer\nsavePathFixed=true\n");
    takeover()->redirect("/ours"); // a second start: the newer value is the user's own now
    takeover()->restore();
    EXPECT_EQ(read(one()), "[General]\nsavePath=/newer\n");
    EXPECT_FALSE(read(two()));
}

TEST_F(TakeoverTest, LeavesAloneWhatIsNotAnOrdinaryFile) {
    write(folder_ + "/elsewhere", "dir=file:///linked\n");
    fs::create_symlink(folder_ + "/elsewhere", two());
    fs::create_directories(one());
    takeover()->redirect("/ours");
    EXPECT_TRUE(fs::is_directory(one()));
    EXPECT_TRUE(fs::is_symlink(two())) << "the user's own link stays one";
    EXPECT_EQ(read(folder_ + "/elsewhere"), "dir=file:///ours\n");
    takeover()->restore();
    EXPECT_EQ(read(folder_ + "/elsewhere"), "dir=file:///linked\n");
    fs::remove(two());
    fs::create_symlink("/nowhere/at/all", two());
    takeover()->redirect("/ours");
    EXPECT_TRUE(fs::is_symlink(two()));
}

TEST_F(TakeoverTest, WithoutAJournalNothingIsTouched) {
    write(one(), settingsOfOne);
    write(journal(), "{ broken");
    takeover()->redirect("/ours");
    EXPECT_EQ(read(one()), settingsOfOne);
    fs::remove(journal());
    fs::create_directories(journal());
    takeover()->redirect("/ours");
    EXPECT_EQ(read(one()), settingsOfOne);
    EXPECT_FALSE(read(two()));
}

// The process is killed at whatever moment; the next one gives everything back.
TEST_F(TakeoverTest, AKillAtAnyMomentLosesNothing) {
    write(one(), settingsOfOne);
    std::mt19937 random(1);
    int caughtApplied = 0;
    for (int round = 0; round < 300; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (;;) {
                takeover()->redirect("/ours");
                takeover()->restore();
            }
        }
        // Later and later, so that the middle is met on slow disks too.
        usleep(static_cast<useconds_t>(500 + random() % (6000 + 200 * static_cast<unsigned>(round))));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
        caughtApplied += read(two()) ? 1 : 0;
        takeover()->restore();
        ASSERT_EQ(read(one()), settingsOfOne) << round;
        ASSERT_FALSE(read(two())) << round;
        ASSERT_FALSE(read(journal())) << round;
    }
    EXPECT_GT(caughtApplied, 0) << "no kill came in the middle";
}

} // namespace

} // namespace rb
