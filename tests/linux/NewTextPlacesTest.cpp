#include "desktops/linux/Files.h"
#include "desktops/linux/FrontFolder.h"
#include "tests/linux/LinuxFixture.h"

#include <QByteArray>

#include <sys/stat.h>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;

class FrontFolderTest : public testing::Test {
protected:
    FrontFolderTest() {
        for (const char* name : {"资料 - 旧", "b"}) {
            fs::create_directory(home_ / name);
        }
    }
    static std::string decide(const std::vector<LinuxFrontFolder::FileManagerWindow>& windows,
                              const LinuxFrontFolder::Locations* locations) {
        const auto answer = LinuxFrontFolder::decide(windows, locations, "/desktop");
        return answer.path.empty() ? "?" : answer.path;
    }
    std::string uri(const std::string& name) const { return "file://" + home_.path() + "/" + name; }

    TemporaryFolder home_;
};

TEST_F(FrontFolderTest, IsTheVisibleTabOfTheFrontWindow) {
    const LinuxFrontFolder::Locations locations{
        {"/w/1", {uri("%E8%B5%84%E6%96%99%20-%20%E6%97%A7"), uri("b")}}, {"/w/2", {uri("b/")}}, {"/w/3", {}},
        {"/w/4", {"trash:///"}}, {"/w/5", {"sftp://host/home"}}, {"/w/6", {uri("gone")}}};
    EXPECT_EQ(decide({{.objectPath = "/w/1"}, {.objectPath = "/w/2"}}, &locations), home_ / "资料 - 旧");
    EXPECT_EQ(decide({{.objectPath = "/w/2"}, {.objectPath = "/w/1"}}, &locations), home_ / "b");
    for (const char* elsewhere : {"/w/3", "/w/4", "/w/5", "/w/6", "/w/7"}) {
        EXPECT_EQ(decide({{.objectPath = elsewhere}, {.objectPath = "/w/2"}}, &locations), "?")
            << elsewhere << ": another window's folder isn't where the user looks";
    }
}

TEST_F(FrontFolderTest, WithoutWindowsIsTheDesktopWhereThatIsCertain) {
    const LinuxFrontFolder::Locations none;
    const LinuxFrontFolder::Locations one{{"/w/1", {uri("b")}}};
    const LinuxFrontFolder::Locations two{{"/w/1", {uri("b")}}, {"/w/2", {uri("b")}}};
    EXPECT_EQ(decide({}, &none), "/desktop");
    EXPECT_EQ(decide({}, nullptr), "?") << "nobody told";
    EXPECT_EQ(decide({}, &one), home_ / "b") << "the only one";
    EXPECT_EQ(decide({}, &two), "?");
}

TEST_F(FrontFolderTest, ATitleWithTheWholePathServesToo) {
    const std::string folder = home_ / "资料 - 旧";
    EXPECT_EQ(decide({{.title = folder + " - Thunar"}}, nullptr), folder);
    EXPECT_EQ(decide({{.title = folder + " — Dolphin"}}, nullptr), folder);
    EXPECT_EQ(decide({{.title = folder}}, nullptr), folder);
    EXPECT_EQ(decide({{.title = "旧 - Thunar"}}, nullptr), "?") << "a name could be any folder's";
    EXPECT_EQ(decide({{.title = home_ / "gone - Thunar"}}, nullptr), "?");
    EXPECT_EQ(decide({{.title = ""}}, nullptr), "?");
}

class NewFileTest : public testing::Test {
protected:
    TemporaryFolder home_;
    LinuxFiles files_;
};

TEST_F(NewFileTest, IsEmptyAndAsPrivateAsTheUserLikes) {
    const mode_t before = umask(027);
    EXPECT_EQ(files_.createEmptyFile(home_ / "新建文本.txt"), std::nullopt);
    umask(before);
    EXPECT_EQ(fs::file_size(home_ / "新建文本.txt"), 0U);
    EXPECT_EQ(static_cast<unsigned>(fs::status(home_ / "新建文本.txt").permissions()), 0640U);
}

TEST_F(NewFileTest, NeverTakesThePlaceOfAnything) {
    writeText(home_ / "a.txt", "mine");
    EXPECT_EQ(files_.createEmptyFile(home_ / "a.txt"), "已有同名文件，请换一个名称。");
    EXPECT_EQ(readText(home_ / "a.txt"), "mine");
    fs::create_symlink(home_ / "elsewhere", home_ / "b.txt");
    EXPECT_TRUE(files_.facts(home_ / "b.txt").isSymbolicLink);
    EXPECT_FALSE(files_.facts(home_ / "b.txt").exists);
    EXPECT_NE(files_.createEmptyFile(home_ / "b.txt"), std::nullopt);
    EXPECT_FALSE(fs::exists(home_ / "elsewhere"));
    EXPECT_EQ(files_.createEmptyFile(home_ / "gone/c.txt"), "要保存到的文件夹已经不在了。");
    EXPECT_EQ(files_.createEmptyFile(home_ / (std::string(300, 'x') + ".txt")), "文件名太长，请换一个短一些的名称。");
    if (geteuid() != 0) {
        fs::permissions(home_.path(), fs::perms::owner_read | fs::perms::owner_exec);
        EXPECT_EQ(files_.createEmptyFile(home_ / "c.txt"), "没有在这个文件夹中新建文件的权限。");
    }
}

} // namespace

} // namespace rb
