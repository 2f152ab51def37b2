#include "tests/session/SessionTest.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <xkbcommon/xkbcommon-keysyms.h>

// New text files in a real session: the folder of other people's file managers, the panel, the file, the editor.
namespace rb {

namespace {

namespace fs = std::filesystem;

constexpr const char* panelTitle = "新建 TXT";
constexpr const char* firstName = "新建文本.txt";

class NewTextTest : public SessionTest {
protected:
    NewTextTest() {
        folder_ = session().folder() + "/home/资料 1";
        fs::create_directories(folder_);
        fs::create_directories(session().folder() + "/home/Desktop");
        // A text editor that only notes what it was given.
        const std::string programs = session().folder() + "/data/applications";
        fs::create_directories(programs);
        writeFile(programs + "/note.desktop",
                  "[Desktop Entry]\nType=Application\nName=Note\nMimeType=text/plain;\nExec=" + session().folder() +
                      "/note %f\n");
        writeFile(session().configFolder() + "/mimeapps.list", "[Default Applications]\ntext/plain=note.desktop\n");
        writeFile(session().folder() + "/note", "#!/bin/sh\nprintf '%s' \"$1\" >" + session().folder() + "/noted\n");
        fs::permissions(session().folder() + "/note", fs::perms::owner_all);
    }

    std::optional<WindowFacts> panel() { return x().viewableTitled(panelTitle); }
    bool waitForPanel() {
        return waitUntil([this] {
            const auto shown = panel();
            return shown && x().hasFocus(shown->window);
        });
    }
    bool waitForFile(const std::string& path) {
        return waitUntil([&] { return fs::is_regular_file(path); });
    }
    std::string noted() { return readFile(session().folder() + "/noted").value_or(""); }
    static bool isInstalled(const std::string& program) {
        return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) ==
               0; // NOLINT(concurrency-mt-unsafe)
    }

    std::string folder_;
};

TEST_F(NewTextTest, TheCommandMakesAFileInTheNamedFolderAndOpensIt) {
    Program& rookBay = startRookBay();
    EXPECT_EQ(launch({"new-text", "file://" + session().folder() + "/home/%E8%B5%84%E6%96%99%201"}).waitForExit(), 0);
    ASSERT_TRUE(waitForPanel());
    // The command again, and the menu item too, only bring the panel forward.
    EXPECT_EQ(launch({"new-text"}).waitForExit(), 0);
    EXPECT_FALSE(fs::exists(folder_ + "/" + firstName));
    x().tapKey(XKB_KEY_Return);
    ASSERT_TRUE(waitForFile(folder_ + "/" + firstName));
    EXPECT_EQ(fs::file_size(folder_ + "/" + firstName), 0U);
    EXPECT_TRUE(waitUntil([this] { return noted() == folder_ + "/" + firstName; })) << noted() << rookBay.output();
    EXPECT_TRUE(waitUntil([this] { return defaults()["TextFileLastDirectory"].toString().toStdString() == folder_; }));
    EXPECT_TRUE(waitUntil([this] { return !panel(); }));
}

TEST_F(NewTextTest, StartedByTheCommandItShowsThePanelAtOnce) {
    launch({"new-text", folder_});
    ASSERT_TRUE(waitForPanel());
    x().tapKey(XKB_KEY_Escape);
    EXPECT_TRUE(waitUntil([this] { return !panel(); }));
    EXPECT_TRUE(fs::is_empty(folder_));
}

TEST_F(NewTextTest, ATakenNameKeepsThePanelOpen) {
    writeFile(folder_ + "/a.txt", "mine");
    fs::create_symlink(session().folder() + "/nowhere", folder_ + "/b.txt");
    startRookBay();
    launch({"new-text", folder_});
    ASSERT_TRUE(waitForPanel());
    for (const std::uint32_t key : {XKB_KEY_a, XKB_KEY_b}) {
        x().tapKey(XKB_KEY_a, {XKB_KEY_Control_L});
        x().tapKey(key);
        x().tapKey(XKB_KEY_Return);
        EXPECT_TRUE(staysTrue([this] { return panel().has_value(); }, 0.5));
    }
    EXPECT_EQ(readFile(folder_ + "/a.txt"), "mine");
    EXPECT_FALSE(fs::exists(session().folder() + "/nowhere"));
    x().tapKey(XKB_KEY_c);
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitForFile(folder_ + "/bc.txt"));
}

TEST_F(NewTextTest, AFolderThatIsGoneIsTold) {
    startRookBay();
    launch({"new-text", folder_});
    ASSERT_TRUE(waitForPanel());
    fs::remove_all(folder_);
    x().tapKey(XKB_KEY_Return);
    ASSERT_TRUE(waitUntil([this] {
        const auto shown = alerts();
        return shown.size() == 1 && x().hasFocus(shown[0].window);
    }));
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitUntil([this] { return alerts().empty(); }));
    EXPECT_FALSE(fs::exists(folder_));
}

TEST_F(NewTextTest, WithoutAFileManagerTheDesktopServes) {
    startRookBay();
    launch({"new-text"});
    ASSERT_TRUE(waitForPanel());
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitForFile(session().folder() + "/home/Desktop/" + firstName));
}

TEST_F(NewTextTest, TheFrontWindowOfNautilusIsWhereTheFileAppears) {
    if (!isInstalled("nautilus")) {
        GTEST_SKIP() << "nautilus isn't installed";
    }
    const std::string other = session().folder() + "/home/other";
    fs::create_directories(other);
    const auto windows = [this] { return x().viewableOfClass("org.gnome.Nautilus").size(); };
    session().environment["GDK_BACKEND"] = "x11";
    session().start({"nautilus", "--new-window", other});
    ASSERT_TRUE(waitUntil([&] { return windows() == 1; }, 30));
    session().start({"nautilus", "--new-window", folder_});
    ASSERT_TRUE(waitUntil([&] { return windows() == 2; }, 30));
    // A window is there before its folder is; then its title says so.
    ASSERT_TRUE(waitUntil([this] { return x().viewableTitled("资料 1").has_value(); }, 30));
    startRookBay();
    EXPECT_TRUE(fs::exists(session().folder() + "/data/nautilus/scripts/新建 TXT（Rook Bay）"));
    launch({"new-text"});
    ASSERT_TRUE(waitForPanel());
    x().tapKey(XKB_KEY_Return);
    EXPECT_TRUE(waitForFile(folder_ + "/" + firstName));
    EXPECT_TRUE(fs::is_empty(other));
}

TEST_F(NewTextTest, FileManagersThatAreThereGetTheAction) {
    startRookBay();
    const std::map<std::string, std::string> places{
        {"nautilus", "/data/nautilus/scripts/新建 TXT（Rook Bay）"},
        {"thunar", "/config/Thunar/uca.xml"},
        {"pcmanfm-qt", "/data/file-manager/actions/rookbay-new-text.desktop"},
        {"nemo", "/data/nemo/actions/rookbay-new-text.nemo_action"},
        {"caja", "/config/caja/scripts/新建 TXT（Rook Bay）"},
        {"dolphin", "/data/kio/servicemenus/rookbay-new-text.desktop"},
    };
    for (const auto& [program, place] : places) {
        EXPECT_EQ(waitUntil([&, file = session().folder() + place] { return fs::exists(file); },
                            isInstalled(program) ? 5 : 0),
                  isInstalled(program))
            << program;
    }
}

} // namespace

} // namespace rb
